#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace tarvik::service {

/// A folder of a test's own, which goes with the test.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name =
            (std::filesystem::temp_directory_path() / "speech-service-test-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = name;
    }
    ~TemporaryDirectory() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// Every byte of a file; nothing when it cannot be read.
inline std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace tarvik::service
