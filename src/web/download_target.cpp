#include "web/download_target.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace lectern {

namespace {

// How many numbered names are tried before giving up.
constexpr int maxNumbered = 9999;

// Where the number goes: before the extension, with the two-part ones of
// compressed archives ("backup.tar.gz") kept whole. A leading dot starts a
// name, not an extension.
std::size_t extensionStart(const std::string& name) {
    std::size_t last = name.rfind('.');
    if (last == std::string::npos || last == 0) return name.size();
    std::size_t previous = name.rfind('.', last - 1);
    if (previous != std::string::npos && previous > 0 && name.compare(previous, last - previous, ".tar") == 0) {
        return previous;
    }
    return last;
}

}  // namespace

std::filesystem::path downloadFolder(const char* configured, const std::filesystem::path& home) {
    if (configured && *configured) {
        std::filesystem::path folder(configured);
        std::error_code error;
        bool isHome = std::filesystem::equivalent(folder, home, error) ||
                      folder.lexically_normal() / "" == home.lexically_normal() / "";
        if (!isHome) return folder;
    }
    return home / "Downloads";
}

std::string safeDownloadName(const std::string& suggested) {
    std::string name = suggested;
    if (auto slash = name.find_last_of("/\\"); slash != std::string::npos) name.erase(0, slash + 1);
    std::string clean;
    for (char c : name) {
        if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f) clean += c;
    }
    if (clean.empty() || clean == "." || clean == "..") return "download";
    return clean;
}

std::optional<std::filesystem::path> claimDownloadFile(const std::filesystem::path& folder, const std::string& name) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::string safe = safeDownloadName(name);
    std::size_t split = extensionStart(safe);
    for (int number = 0; number <= maxNumbered; ++number) {
        std::string candidate = number == 0 ? safe
                                            : safe.substr(0, split) + " (" + std::to_string(number) + ")" +
                                                  safe.substr(split);
        std::filesystem::path path = folder / candidate;
        int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (fd >= 0) {
            ::close(fd);
            return path;
        }
        if (errno != EEXIST) return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace lectern
