// A folder that goes away with its owner.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>

namespace velto::test {

// The bytes of a file; none of one that is not there.
inline std::string textOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velto-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    path_ = pattern;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name = {}) const { return name.empty() ? path_ : path_ + "/" + name; }
  // Makes folders on the way as needed.
  std::string write(const std::string& name, const std::string& text) const {
    const std::filesystem::path file(path(name));
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
  }

 private:
  std::string path_;
};

// A folder that variables of the environment name. Made before main, before a library has looked.
class EnvironmentFolder : public TemporaryFolder {
 public:
  EnvironmentFolder(std::initializer_list<const char*> variables) {
    for (const char* variable : variables) setenv(variable, path().c_str(), 1);
  }
};

}  // namespace velto::test
