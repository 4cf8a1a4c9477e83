// SPDX-License-Identifier: MIT

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <iostream>
#include <string_view>
#include <utility>
#include <vector>

#include "speech-service/CertificateStore.h"
#include "speech-service/CommandLine.h"
#include "speech-service/EngineChoice.h"
#include "speech-service/HandedSockets.h"
#include "speech-service/KeyFile.h"
#include "speech-service/Server.h"

namespace service = tarvik::service;

namespace {

constexpr int badUsage = 2;

int fail(const tarvik::Error& error, int status) {
    std::cerr << "tarvik-speech-service: " + error.localizedDescription + "\n";
    return status;
}

service::ServerOptions serverOptions(const service::CommandLine& commandLine) {
    service::ServerOptions options;
    options.port = commandLine.port;
    options.metricsPort = commandLine.metricsPort;
    options.maxStreams = commandLine.maxStreams;
    options.refusal = commandLine.refusal;
    return options;
}

int serve(const service::CommandLine& commandLine, const service::CertificateFiles& certificates) {
    auto sockets = service::takeHandedSockets();
    if (!sockets) {
        return fail(sockets.error(), EXIT_FAILURE);
    }
    service::ServerOptions options = serverOptions(commandLine);
    options.sockets = std::move(sockets).value();
    if (!commandLine.keyFile.empty()) {
        auto keys = service::readKeyFile(commandLine.keyFile);
        if (!keys) {
            return fail(keys.error(), EXIT_FAILURE);
        }
        options.keys = std::move(keys).value();
    }
    auto engine = service::createEngine(commandLine.engine, commandLine.model);
    if (!engine) {
        return fail(engine.error(), EXIT_FAILURE);
    }
    boost::asio::io_context context(1);
    const auto server =
        service::Server::create(context, options, certificates, std::move(engine).value());
    if (!server) {
        return fail(server.error(), EXIT_FAILURE);
    }
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&server](boost::system::error_code error, int) {
        if (!error) {
            server.value()->stop();
        }
    });
    std::cout << "listening on wss://localhost:" << server.value()->port() << service::listenPath
              << std::endl;
    if (server.value()->metricsPort() != 0) {
        std::cout << "metrics on http://127.0.0.1:" << server.value()->metricsPort() << "/metrics"
                  << std::endl;
    }
    context.run();
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argumentCount, char** argumentValues) {
    const std::vector<std::string_view> arguments(argumentValues + 1,
                                                  argumentValues + argumentCount);
    const auto commandLine = service::parseCommandLine(arguments);
    if (!commandLine) {
        return fail(commandLine.error(), badUsage);
    }
    using Action = service::CommandLine::Action;
    if (commandLine.value().action == Action::help) {
        std::cout << service::usage();
        return EXIT_SUCCESS;
    }
    if (commandLine.value().action == Action::version) {
        std::cout << "tarvik-speech-service " TARVIK_VERSION "\n";
        return EXIT_SUCCESS;
    }
    const auto certificates = service::prepareCertificates(commandLine.value().stateDirectory);
    if (!certificates) {
        return fail(certificates.error(), EXIT_FAILURE);
    }
    if (commandLine.value().action == Action::printAuthority) {
        std::cout << certificates.value().authority.string() << std::endl;
        return EXIT_SUCCESS;
    }
    return serve(commandLine.value(), certificates.value());
}
