// SPDX-License-Identifier: MIT

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <iostream>
#include <string_view>
#include <vector>

#include "speech-service/CertificateStore.h"
#include "speech-service/CommandLine.h"
#include "speech-service/Server.h"

namespace service = tarvik::service;

namespace {

constexpr int badUsage = 2;

int fail(const tarvik::Error& error, int status) {
    std::cerr << "tarvik-speech-service: " + error.localizedDescription + "\n";
    return status;
}

int serve(std::uint16_t port, const service::CertificateFiles& certificates) {
    boost::asio::io_context context(1);
    service::ServerOptions options;
    options.port = port;
    const auto server = service::Server::create(context, options, certificates);
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
    const auto certificates = service::prepareCertificates(commandLine.value().stateDirectory);
    if (!certificates) {
        return fail(certificates.error(), EXIT_FAILURE);
    }
    if (commandLine.value().action == Action::printAuthority) {
        std::cout << certificates.value().authority.string() << std::endl;
        return EXIT_SUCCESS;
    }
    return serve(commandLine.value().port, certificates.value());
}
