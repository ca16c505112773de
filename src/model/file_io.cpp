#include "model/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace lectern {

namespace fs = std::filesystem;

namespace {

struct FileDescriptor {
    int fd = -1;
    explicit FileDescriptor(int f) : fd(f) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (fd >= 0) ::close(fd);
    }
    // Closes now, reporting the error (a failed close can mean lost data).
    int release() {
        int result = ::close(fd);
        fd = -1;
        return result;
    }
};

bool writeAll(int fd, const std::uint8_t* data, std::size_t size) {
    while (size > 0) {
        ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

Error writeError(const fs::path& path, int error) {
    return Error{"Could not write \u201C" + path.filename().string() + "\u201D: " + std::strerror(error) + ".",
                 ErrorKind::fileWrite};
}

std::optional<std::vector<std::uint8_t>> readRegularFile(const fs::path& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (file.fd < 0) return std::nullopt;
    struct stat info{};
    if (::fstat(file.fd, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(info.st_size));
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) bytes.resize(bytes.size() + 65536);  // the file grew
        ssize_t n = ::read(file.fd, bytes.data() + filled, bytes.size() - filled);
        if (n < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (n == 0) break;
        filled += static_cast<std::size_t>(n);
    }
    bytes.resize(filled);
    return bytes;
}

Status writeNewFileDurably(const fs::path& path, std::span<const std::uint8_t> bytes) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.fd < 0) return writeError(path, errno);
    if (!writeAll(file.fd, bytes.data(), bytes.size()) || ::fsync(file.fd) != 0) {
        int error = errno;
        return writeError(path, error);
    }
    if (file.release() != 0) return writeError(path, errno);
    return Done{};
}

Status writeNewFileDurably(const fs::path& path, std::string_view bytes) {
    return writeNewFileDurably(path, std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

Status syncDirectory(const fs::path& path) {
    FileDescriptor dir(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir.fd < 0 || ::fsync(dir.fd) != 0) return writeError(path, errno);
    return Done{};
}

Status replaceFileAtomically(const fs::path& path, std::string_view bytes) {
    fs::path directory = path.parent_path();
    std::error_code ec;
    fs::create_directories(directory, ec);
    std::string name(".");
    name += path.filename().string();
    name += ".XXXXXX";
    std::string pattern = (directory / name).string();
    int fd = ::mkstemp(pattern.data());
    if (fd < 0) return writeError(path, errno);
    FileDescriptor file(fd);
    fs::path temporary = pattern;
    auto fail = [&](int error) {
        ::unlink(temporary.c_str());
        return writeError(path, error);
    };
    if (::fchmod(fd, 0644) != 0) return fail(errno);
    if (!writeAll(fd, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()) || ::fsync(fd) != 0) {
        return fail(errno);
    }
    if (file.release() != 0) return fail(errno);
    if (::rename(temporary.c_str(), path.c_str()) != 0) return fail(errno);
    return syncDirectory(directory);
}

}  // namespace lectern
