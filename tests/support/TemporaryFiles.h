#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace quill::test {

/** A folder that goes, with what is in it, when the object goes. */
class TemporaryFolder {
  public:
    TemporaryFolder() { mkdtemp(mPath.data()); }
    ~TemporaryFolder() { std::filesystem::remove_all(mPath); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return mPath; }
    void write(const std::string& name, const std::string& text) const { std::ofstream(mPath + "/" + name) << text; }

  private:
    std::string mPath = std::filesystem::temp_directory_path() / "quill-test-XXXXXX";
};

/** A file open for reading and writing, as a camera app hands one over. */
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::vector<uint8_t>& bytes = {}) {
        std::ofstream(mPath, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        lseek(mFd, 0, SEEK_END);
    }
    ~TemporaryFile() {
        close(mFd);
        unlink(mPath.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int fd() const { return mFd; }
    const std::string& path() const { return mPath; }
    std::vector<uint8_t> bytes() const {
        std::ifstream file(mPath, std::ios::binary);
        return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
    }

  private:
    std::string mPath = std::filesystem::temp_directory_path() / "quill-test-XXXXXX";
    const int mFd = mkostemp(mPath.data(), O_CLOEXEC);
};

}  // namespace quill::test
