// SPDX-License-Identifier: MIT

#include "platform/linux/windows/AlertDialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <algorithm>

#include "platform/linux/windows/Assets.h"
#include "platform/linux/windows/LegibleLineEdit.h"
#include "platform/linux/windows/LinuxTexts.h"
#include "platform/linux/windows/Mnemonics.h"
#include "platform/linux/windows/Scaling.h"
#include "platform/linux/windows/UserAction.h"
#include "platform/linux/windows/WindowManagerRequests.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr int iconSide = 48;
constexpr const char* cancelTitle = "Cancel";

QLabel* label(const std::string& text, QWidget* parent) {
    auto* made = new QLabel(shownText(text), parent);
    made->setTextFormat(Qt::PlainText);
    made->setWordWrap(true);
    return made;
}

}  // namespace

AlertDialog::AlertDialog(const platform::Alert& alert) {
    setWindowTitle(QApplication::applicationDisplayName());
    setWindowIcon(applicationIcon());
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                   Qt::WindowStaysOnTopHint);
    addText(alert);
    addButtons(alert.buttons);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void AlertDialog::addText(const platform::Alert& alert) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(pixels(20), pixels(20), pixels(20), pixels(16));
    grid->setHorizontalSpacing(pixels(16));
    grid->setVerticalSpacing(pixels(8));

    auto* icon = new QLabel(this);
    const QSize iconSize(pixels(iconSide), pixels(iconSide));
    icon->setPixmap(applicationIcon().pixmap(iconSize, devicePixelRatioF()));
    grid->addWidget(icon, 0, 0, 3, 1, Qt::AlignTop);

    QLabel* message = label(alert.messageText, this);
    QFont bold = message->font();
    bold.setBold(true);
    message->setFont(bold);
    grid->addWidget(message, 0, 1);
    QLabel* informative = label(alert.informativeText, this);
    grid->addWidget(informative, 1, 1);

    field_ = new LegibleLineEdit(this);
    field_->setText(QString::fromStdString(alert.fieldText));
    field_->setPlaceholderText(QString::fromStdString(alert.fieldPlaceholder));
    field_->setAccessibleName(message->text());
    field_->setAccessibleDescription(informative->text());
    // Large fonts need more than the height asked for.
    field_->setFixedSize(pixels(alert.fieldWidth),
                         std::max(pixels(alert.fieldHeight), field_->sizeHint().height()));
    grid->addWidget(field_, 2, 1);
}

void AlertDialog::addButtons(const std::vector<std::string>& titles) {
    auto* box = new QDialogButtonBox(this);
    int code = platform::alertFirstButtonReturn;
    for (const std::string& title : titles) {
        const bool isFirst = code == platform::alertFirstButtonReturn;
        const bool isCancel = title == cancelTitle;
        QPushButton* button =
            box->addButton(QString::fromStdString(title), isCancel  ? QDialogButtonBox::RejectRole
                                                          : isFirst ? QDialogButtonBox::AcceptRole
                                                                    : QDialogButtonBox::ActionRole);
        button->setDefault(isFirst);
        button->setAutoDefault(isFirst);
        escapeCode_ = isCancel ? code : escapeCode_;
        connect(button, &QPushButton::clicked, this, [this, code] { done(code_ = code); });
        ++code;
    }
    giveMnemonics(*box);
    auto* grid = static_cast<QGridLayout*>(layout());
    grid->setRowMinimumHeight(3, pixels(8));
    grid->addWidget(box, 4, 0, 1, 2);
}

// Escape and the window's close button both end here.
void AlertDialog::reject() {
    done(code_ = escapeCode_);
}

void AlertDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    field_->setFocus();
    field_->selectAll();
    // The window is mapped only after this event, and cannot be activated before.
    QMetaObject::invokeMethod(
        this,
        [this] {
            const UserAction hotkey;
            bringToFront(*this);
        },
        Qt::QueuedConnection);
}

platform::AlertAnswer AlertDialog::run() {
    exec();
    return {code_, field_->text().toStdString()};
}

}  // namespace tarvik::linuxdesktop
