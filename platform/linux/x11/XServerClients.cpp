// SPDX-License-Identifier: MIT

#include "platform/linux/x11/XServerClients.h"

#include <fstream>
#include <sstream>

namespace tarvik::linuxdesktop {

bool hasClients(const std::string& display) {
    if (display.size() < 2 || display.front() != ':') {
        return false;
    }
    const std::string path = "/tmp/.X11-unix/X" + display.substr(1, display.find('.') - 1);
    // Connections have the path of the socket that accepted them. Names in the abstract namespace
    // begin with an @ here.
    std::ifstream sockets("/proc/net/unix");
    for (std::string line; std::getline(sockets, line);) {
        std::istringstream fields(line);
        std::string address;
        std::string count;
        std::string protocol;
        std::string flags;
        std::string type;
        std::string state;
        std::string inode;
        std::string name;
        fields >> address >> count >> protocol >> flags >> type >> state >> inode >> name;
        constexpr const char* connected = "03";
        if (state == connected && (name == path || name == "@" + path)) {
            return true;
        }
    }
    return false;
}

}  // namespace tarvik::linuxdesktop
