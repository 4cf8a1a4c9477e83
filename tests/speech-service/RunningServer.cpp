// SPDX-License-Identifier: MIT

#include "tests/speech-service/RunningServer.h"

#include <boost/asio/post.hpp>

#include "speech-service/CertificateStore.h"
#include "speech-service/EngineChoice.h"

namespace tarvik::service {

std::shared_ptr<Engine> realEngine() {
    return createEngine(defaultEngine, {}).value();
}

RunningServer::RunningServer(ServerOptions options, std::shared_ptr<Engine> engine)
    : certificates_(prepareCertificates(folder_.path()).value()),
      server_(Server::create(context_, options, certificates_, std::move(engine)).value()),
      thread_([this] { context_.run(); }) {}

RunningServer::~RunningServer() {
    stop();
    join();
}

void RunningServer::stop() {
    boost::asio::post(context_, [this] { server_->stop(); });
}

void RunningServer::join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

}  // namespace tarvik::service
