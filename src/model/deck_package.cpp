#include "model/deck_package.h"

#include <glib/gi18n.h>

#include <fcntl.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/translation.h"
#include "model/body_lines.h"
#include "model/deck_json.h"
#include "model/digests.h"
#include "model/file_io.h"

namespace lectern {

namespace fs = std::filesystem;

namespace {

constexpr std::uint8_t pngSignature[] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A};

std::string quotedName(const fs::path& path) {
    std::string name = path.filename().string();
    if (name.empty()) name = path.parent_path().filename().string();  // "Deck.lectern/"
    return "\u201C" + name + "\u201D";
}

bool isDirectoryNoFollow(const fs::path& path) {
    std::error_code ec;
    return fs::symlink_status(path, ec).type() == fs::file_type::directory;
}

// ------------------------------------------------------------- building a copy

// Rebuilds `from` at `to` (which does not exist yet): folders are created,
// regular files hard-linked (copied where links are impossible), symbolic
// links recreated. `keep` decides per member name.
Status replicate(const fs::path& from, const fs::path& to, const std::function<bool(const std::string&)>& keep) {
    std::error_code ec;
    fs::create_directory(to, ec);
    if (ec) return writeError(to, ec.value());
    for (const auto& entry : fs::directory_iterator(from, ec)) {
        std::string name = entry.path().filename().string();
        if (!keep(name)) continue;
        fs::path target = to / name;
        auto type = entry.symlink_status(ec).type();
        if (type == fs::file_type::directory) {
            if (auto status = replicate(entry.path(), target, [](const std::string&) { return true; }); !status) {
                return status;
            }
        } else if (type == fs::file_type::regular) {
            if (::link(entry.path().c_str(), target.c_str()) != 0) {
                if (auto status = copyRegularFileDurably(entry.path(), target); !status) return status;
            }
        } else if (type == fs::file_type::symlink) {
            fs::copy_symlink(entry.path(), target, ec);
            if (ec) return writeError(target, ec.value());
        }
        // Sockets, pipes and devices have no place in a document; they are not carried over.
    }
    if (ec) return writeError(from, ec.value());
    return Done{};
}

Status syncTree(const fs::path& directory) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(directory, ec)) {
        if (entry.symlink_status(ec).type() == fs::file_type::directory) {
            if (auto status = syncTree(entry.path()); !status) return status;
        }
    }
    return syncDirectory(directory);
}

std::string temporaryPrefix(const fs::path& destination) {
    std::string prefix(".");
    prefix += destination.filename().string();
    prefix += ".saving-";
    return prefix;
}

// Removes what earlier saves left behind when they were interrupted.
void removeLeftovers(const fs::path& destination) {
    std::error_code ec;
    std::string prefix = temporaryPrefix(destination);
    for (const auto& entry : fs::directory_iterator(destination.parent_path(), ec)) {
        std::string name = entry.path().filename().string();
        if (name.size() == prefix.size() + 6 && name.rfind(prefix, 0) == 0) fs::remove_all(entry.path(), ec);
    }
}

// Puts `fresh` in place of `destination`, atomically.
Status swapIntoPlace(const fs::path& fresh, const fs::path& destination) {
    const fs::path parent = destination.parent_path();
    if (::renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, destination.c_str(), RENAME_EXCHANGE) == 0) {
        return syncDirectory(parent);  // `fresh` now names the old package
    }
    if (errno == ENOENT) {
        // Nothing to replace: a new package. RENAME_NOREPLACE refuses to
        // clobber one that appeared meanwhile.
        if (::renameat2(AT_FDCWD, fresh.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) != 0) {
            return writeError(destination, errno);
        }
        return syncDirectory(parent);
    }
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return writeError(destination, errno);
    // The file system cannot exchange: move the old package aside, then the
    // new one in. The old one stays beside it until the new one is in place.
    fs::path aside = fresh;
    aside += ".old";
    if (::rename(destination.c_str(), aside.c_str()) != 0) return writeError(destination, errno);
    if (::rename(fresh.c_str(), destination.c_str()) != 0) {
        int error = errno;
        ::rename(aside.c_str(), destination.c_str());
        return writeError(destination, error);
    }
    ::rename(aside.c_str(), fresh.c_str());
    return syncDirectory(parent);
}

}  // namespace

// ------------------------------------------------------------------ media names

std::string DeckPackage::mediaName(std::span<const std::uint8_t> bytes) {
    bool png = bytes.size() >= sizeof pngSignature && std::equal(std::begin(pngSignature), std::end(pngSignature), bytes.begin());
    return sha256Hex(bytes) + (png ? ".png" : ".jpg");
}

bool DeckPackage::isValidMediaName(std::string_view name) {
    auto dot = name.find('.');
    if (dot == std::string_view::npos || name.find('.', dot + 1) != std::string_view::npos) return false;
    std::string_view hash = name.substr(0, dot);
    std::string_view extension = name.substr(dot + 1);
    if (extension != "png" && extension != "jpg") return false;
    return hash.size() == 64 &&
           std::all_of(hash.begin(), hash.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

std::set<std::string> DeckPackage::heldMedia(const fs::path& package) {
    std::set<std::string> names;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(package / mediaMember, ec)) {
        std::string name = entry.path().filename().string();
        if (isValidMediaName(name) && entry.symlink_status(ec).type() == fs::file_type::regular) names.insert(name);
    }
    return names;
}

// ---------------------------------------------------------------------- reading

Result<Deck> DeckPackage::read(const fs::path& package) {
    std::error_code ec;
    auto status = fs::status(package, ec);  // the package itself may be reached through a link
    if (status.type() == fs::file_type::not_found) {
        return Error{formatText(_("The file %s couldn\u2019t be opened because there is no such file."), quotedName(package).c_str()),
                     ErrorKind::fileReadNoSuchFile};
    }
    if (status.type() != fs::file_type::directory) {
        return Error{formatText(_("The file %s couldn\u2019t be opened because it isn\u2019t in the correct format."),
                                quotedName(package).c_str()),
                     ErrorKind::fileReadCorruptFile};
    }
    auto json = readRegularFile(package / deckMember, deckSizeLimit);
    if (!json) {
        if (json.error().kind == ErrorKind::fileTooLarge) return json.error();
        return Error{formatText(_("The file %s couldn\u2019t be opened because it has no readable deck.json."),
                                quotedName(package).c_str()),
                     ErrorKind::fileReadNoSuchFile};
    }
    auto decoded = DeckJson::decode(std::string_view(reinterpret_cast<const char*>(json->data()), json->size()));
    if (!decoded) return decoded;
    Deck deck = std::move(decoded).value();

    const fs::path media = package / mediaMember;
    for (auto& slide : deck.slides) {
        if (!slide.imageFile) continue;
        slide.imageData.reset();
        if (isValidMediaName(*slide.imageFile)) {
            if (auto bytes = readRegularFile(media / *slide.imageFile, mediaSizeLimit)) {
                slide.imageData = SharedBytes(std::move(bytes).value());
            }
        }
        if (!slide.imageData) slide.imageFile.reset();
    }
    // Bodies of schema 1 carried attributes outside the body's scope; the
    // decoder keeps only the scoped ones, so they arrive converted already.
    deck.schemaVersion = Deck::currentSchemaVersion;
    return deck;
}

// ---------------------------------------------------------------------- writing

DeckPackage::WritePlan DeckPackage::plan(const Deck& deck, const std::set<std::string>& heldMedia) {
    WritePlan plan{deck, {}, {}};
    std::set<std::string> held = heldMedia;
    for (auto& slide : plan.stored.slides) {
        slide.body = trimmedBlankLines(slide.body);
        if (slide.imageData) {
            std::string name = slide.imageFile && isValidMediaName(*slide.imageFile) && held.contains(*slide.imageFile)
                                   ? *slide.imageFile
                                   : mediaName(slide.imageData->span());
            if (held.insert(name).second) plan.newMedia.emplace(name, *slide.imageData);
            slide.imageFile = name;
            slide.imageData.reset();
        }
        if (slide.imageFile) plan.referencedMedia.insert(*slide.imageFile);
    }
    return plan;
}

std::string DeckPackage::encodeForSaving(const Deck& deck, const fs::path& package) {
    return DeckJson::encode(plan(deck, heldMedia(package)).stored);
}

Status DeckPackage::write(const Deck& deck, const fs::path& destinationPath,
                          const std::optional<fs::path>& existingPath, const DeckPreviewMaker& previews) {
    fs::path destination = fs::absolute(destinationPath).lexically_normal();
    if (!destination.has_filename()) destination = destination.parent_path();  // "Talk.lectern/"
    std::error_code linkError;
    if (fs::is_symlink(destination, linkError)) {
        // Save through a link into the package it points at, keeping the link.
        fs::path target = fs::canonical(destination, linkError);
        if (!linkError) destination = target;
    }
    const fs::path parent = destination.parent_path();
    std::optional<fs::path> existing;
    if (existingPath && isDirectoryNoFollow(*existingPath)) existing = *existingPath;

    const WritePlan written = plan(deck, existing ? heldMedia(*existing) : std::set<std::string>{});

    removeLeftovers(destination);
    std::string pattern = (parent / (temporaryPrefix(destination) + "XXXXXX")).string();
    if (!::mkdtemp(pattern.data())) return writeError(destination, errno);
    const fs::path fresh = pattern;
    // The new package gets the old one's permissions, or the usual ones for a new folder.
    struct stat info{};
    mode_t mode = 0;
    if (::stat(destination.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        mode = info.st_mode & 07777;
    } else {
        mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0777 & ~mask;
    }
    ::chmod(fresh.c_str(), mode);
    auto failed = [&](Status status) {
        std::error_code ignored;
        fs::remove_all(fresh, ignored);
        return status;
    };

    // Members the deck does not own are carried over; media/ keeps only the
    // images still referenced and every file whose name is not a media name.
    if (existing) {
        auto status = replicate(*existing, fresh, [](const std::string& name) {
            return name != deckMember && name != previewsMember && name != mediaMember;
        });
        if (!status) return failed(status);
        // A stray file named media is not carried over: a folder replaces it.
        if (isDirectoryNoFollow(*existing / mediaMember)) {
            status = replicate(*existing / mediaMember, fresh / mediaMember, [&](const std::string& name) {
                return !isValidMediaName(name) || written.referencedMedia.contains(name);
            });
            if (!status) return failed(status);
        }
    }

    std::error_code ec;
    fs::create_directory(fresh / mediaMember, ec);
    for (const auto& [name, bytes] : written.newMedia) {
        fs::path target = fresh / mediaMember / name;
        if (isDirectoryNoFollow(target)) fs::remove_all(target, ec);  // a folder squatting on the name
        if (auto status = writeNewFileDurably(target, bytes.span()); !status) return failed(status);
    }
    if (auto status = writeNewFileDurably(fresh / deckMember, DeckJson::encode(written.stored)); !status) {
        return failed(status);
    }
    fs::create_directory(fresh / previewsMember, ec);
    if (ec) return failed(writeError(fresh / previewsMember, ec.value()));
    if (previews) {
        DeckPreviews made = previews(deck);
        if (made.thumbnailPng) {
            if (auto status = writeNewFileDurably(fresh / previewsMember / thumbnailMember, *made.thumbnailPng); !status) {
                return failed(status);
            }
        }
        if (made.previewPdf) {
            if (auto status = writeNewFileDurably(fresh / previewsMember / previewMember, *made.previewPdf); !status) {
                return failed(status);
            }
        }
    }
    if (auto status = syncTree(fresh); !status) return failed(status);
    if (auto status = swapIntoPlace(fresh, destination); !status) return failed(status);
    fs::remove_all(fresh, ec);  // the old package, now under the temporary name
    return Done{};
}

}  // namespace lectern
