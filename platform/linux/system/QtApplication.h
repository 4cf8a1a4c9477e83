#pragma once

#include <QApplication>
#include <memory>

#include "platform/Application.h"
#include "platform/linux/system/TerminationSignals.h"

namespace tarvik::linuxdesktop {

/// The process's QApplication.
///
/// SIGTERM, SIGINT and SIGHUP terminate it. It is an accessory whatever the policy says: it has no
/// window of its own, closing the last one does not end it, and only its windows appear in a task
/// list.
class QtApplication final : public platform::Application {
  public:
    /// The arguments are those of main and outlive the object.
    QtApplication(int& argumentCount, char** arguments);

    void setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) override;
    void setActivationPolicy(platform::ActivationPolicy policy) override;
    int run() override;
    void terminate() override;
    void activateIgnoringOtherApps() override;

  private:
    QApplication application_;
    TerminationSignals signals_;
    std::shared_ptr<platform::ApplicationDelegate> delegate_;
    bool isTerminated_ = false;
};

}  // namespace tarvik::linuxdesktop
