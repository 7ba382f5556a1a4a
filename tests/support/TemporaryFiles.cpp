#include "support/TemporaryFiles.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quill::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : mPath((fs::temp_directory_path() / "quill-test-XXXXXX").string()) {
    if (mkdtemp(mPath.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code unremovable;
    fs::remove_all(mPath, unremovable);
}

void TemporaryFolder::write(const std::string& name, const std::string& text) const {
    std::ofstream(mPath + "/" + name) << text;
}

TemporaryFile::TemporaryFile()
        : mPath(mFolder.path() + "/still.heic"), mFd(open(mPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (mFd < 0) throw std::runtime_error("no temporary file");
}

TemporaryFile::~TemporaryFile() { close(mFd); }

std::vector<uint8_t> TemporaryFile::bytes() const {
    std::ifstream file(mPath, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

}  // namespace quill::test
