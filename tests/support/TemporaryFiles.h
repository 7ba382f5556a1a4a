#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quill::test {

/** A folder that goes, with what is in it, when the object goes. */
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return mPath; }
    void write(const std::string& name, const std::string& text) const;

  private:
    std::string mPath;
};

/** An empty file open for reading and writing, as a camera app hands one over. */
class TemporaryFile {
  public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int fd() const { return mFd; }
    const std::string& path() const { return mPath; }
    std::vector<uint8_t> bytes() const;

  private:
    const TemporaryFolder mFolder;
    std::string mPath;
    int mFd;
};

}  // namespace quill::test
