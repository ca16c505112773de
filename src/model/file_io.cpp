#include "model/file_io.h"

#include <glib/gi18n.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "base/translation.h"

namespace lectern {

namespace fs = std::filesystem;

namespace {

struct FileDescriptor {
    int fd = -1;
    explicit FileDescriptor(int f) : fd(f) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
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

Error readError(const fs::path& path, int error) {
    return Error{formatText(_("Could not read \u201C%s\u201D: %s."), path.filename().c_str(), std::strerror(error)),
                 ErrorKind::fileReadNoSuchFile};
}

Error tooLarge(const fs::path& path, std::uint64_t sizeLimit) {
    return Error{formatText(_("%s is larger than %s MiB"), path.filename().c_str(), std::to_string(sizeLimit >> 20).c_str()),
                 ErrorKind::fileTooLarge};
}

struct OpenedFile {
    FileDescriptor file;
    off_t size = 0;
};

// Opens a regular file for reading. O_NONBLOCK keeps the open of a pipe from
// waiting for a writer that never comes; the opened descriptor, not the name,
// is then checked, so nothing can be swapped in between.
Result<OpenedFile> openRegularFile(const fs::path& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    if (file.fd < 0) return readError(path, errno);
    struct stat info{};
    if (::fstat(file.fd, &info) != 0) return readError(path, errno);
    if (!S_ISREG(info.st_mode)) {
        return Error{formatText(_("\u201C%s\u201D is not a regular file."), path.filename().c_str()),
                     ErrorKind::fileReadNoSuchFile};
    }
    return OpenedFile{std::move(file), info.st_size};
}

}  // namespace

Error writeError(const fs::path& path, int error) {
    return Error{formatText(_("Could not write \u201C%s\u201D: %s."), path.filename().c_str(), std::strerror(error)),
                 ErrorKind::fileWrite};
}

Result<std::vector<std::uint8_t>> readRegularFile(const fs::path& path, std::uint64_t sizeLimit) {
    auto opened = openRegularFile(path);
    if (!opened) return opened.error();
    const int fd = opened->file.fd;
    if (static_cast<std::uint64_t>(opened->size) > sizeLimit) return tooLarge(path, sizeLimit);
    // One byte past the limit tells a file that grew while it was read.
    const std::size_t most = static_cast<std::size_t>(sizeLimit) + 1;
    std::vector<std::uint8_t> bytes(std::min(static_cast<std::size_t>(opened->size) + 1, most));
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) {
            if (filled == most) return tooLarge(path, sizeLimit);
            bytes.resize(std::min(bytes.size() + 65536, most));
        }
        ssize_t n = ::read(fd, bytes.data() + filled, bytes.size() - filled);
        if (n < 0) {
            if (errno == EINTR) continue;
            return readError(path, errno);
        }
        if (n == 0) break;
        filled += static_cast<std::size_t>(n);
    }
    bytes.resize(filled);
    return bytes;
}

Status copyRegularFileDurably(const fs::path& from, const fs::path& to) {
    auto opened = openRegularFile(from);
    if (!opened) return Error{opened.error().message, ErrorKind::fileWrite};
    const int source = opened->file.fd;
    FileDescriptor target(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (target.fd < 0) return writeError(to, errno);
    std::vector<std::uint8_t> chunk(1 << 20);
    for (;;) {
        ssize_t n = ::read(source, chunk.data(), chunk.size());
        if (n == 0) break;
        if (n < 0) {
            if (errno == EINTR) continue;
            return Error{readError(from, errno).message, ErrorKind::fileWrite};
        }
        if (!writeAll(target.fd, chunk.data(), static_cast<std::size_t>(n))) return writeError(to, errno);
    }
    if (::fsync(target.fd) != 0 || target.release() != 0) return writeError(to, errno);
    return Done{};
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

Status replaceFileAtomically(const fs::path& path, std::string_view bytes, unsigned mode) {
    fs::path directory = path.parent_path();
    if (directory.empty()) directory = ".";  // a bare name is in the current folder
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
    if (::fchmod(fd, static_cast<mode_t>(mode)) != 0) return fail(errno);
    if (!writeAll(fd, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()) || ::fsync(fd) != 0) {
        return fail(errno);
    }
    if (file.release() != 0) return fail(errno);
    if (::rename(temporary.c_str(), path.c_str()) != 0) return fail(errno);
    return syncDirectory(directory);
}

}  // namespace lectern
