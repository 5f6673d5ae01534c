#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "system/file_replace.h"

namespace regvex::system {

namespace fs = std::filesystem;

namespace {

std::string ErrorText() {
    return std::strerror(errno);
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

void Step(const ReplaceHooks& hooks, std::string_view step) {
    if (hooks.after_step) {
        hooks.after_step(step);
    }
}

bool SyncPath(const fs::path& path, int flags) {
    const FileDescriptor fd(open(path.c_str(), flags | O_CLOEXEC));
    return fd.get() >= 0 && fsync(fd.get()) == 0;
}

std::uint64_t FreeBytes(const fs::path& folder, const ReplaceHooks& hooks) {
    if (hooks.free_bytes) {
        return hooks.free_bytes(folder);
    }
    struct statvfs info {};
    if (statvfs(folder.c_str(), &info) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
}

ReplaceResult Failed(const fs::path& fresh, std::string message) {
    std::error_code ignored;
    fs::remove(fresh, ignored);
    message += "; the file was not changed";
    return {ReplaceOutcome::kFailed, std::move(message)};
}

}  // namespace

std::string QuotedName(const fs::path& file) {
    std::string quoted = "\"";
    quoted += file.string();
    quoted += '"';
    return quoted;
}

std::string WhyFileCannotBeReplaced(const fs::path& file, std::uint64_t spare_bytes,
                                    const ReplaceHooks& hooks) {
    struct stat info {};
    if (stat(file.c_str(), &info) != 0) {
        return QuotedName(file) + " cannot be read (" + ErrorText() + ")";
    }
    const fs::path folder = fs::absolute(file).parent_path();
    struct statvfs mount {};
    if (statvfs(folder.c_str(), &mount) == 0 && (mount.f_flag & ST_RDONLY) != 0) {
        return QuotedName(file) + " lies on a file system mounted read-only";
    }
    if ((info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(folder.c_str(), W_OK) != 0) {
        return QuotedName(file) + " or its folder is read-only";
    }
    const std::uint64_t needed = static_cast<std::uint64_t>(info.st_size) + spare_bytes;
    if (FreeBytes(folder, hooks) < needed) {
        return "there is no room for a changed copy of " + QuotedName(file) + " in its folder (" +
               std::to_string(needed) + " bytes needed)";
    }
    return {};
}

std::string WriteNewFile(const fs::path& file, std::string_view bytes, const fs::path& mode_of) {
    struct stat info {};
    const mode_t mode = stat(mode_of.c_str(), &info) == 0 ? info.st_mode & 07777 : 0600;
    const FileDescriptor fd(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (fd.get() < 0) {
        return QuotedName(file) + " cannot be created (" + ErrorText() + ")";
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = write(fd.get(), bytes.data() + done, bytes.size() - done);
        if (wrote <= 0) {
            return QuotedName(file) + " cannot be written (" + ErrorText() + ")";
        }
        done += static_cast<std::size_t>(wrote);
    }
    return {};
}

ReplaceResult ReplaceFile(const fs::path& file,
                          const std::function<std::string(const fs::path&)>& write,
                          const std::function<std::string(const fs::path&)>& verify,
                          const ReplaceHooks& hooks) {
    fs::path fresh = file;
    fresh += ".regvexlor-new";
    std::error_code ignored;
    fs::remove(fresh, ignored);  // left by a change that was interrupted
    std::string error = write(fresh);
    if (!error.empty()) {
        return Failed(fresh, error);
    }
    Step(hooks, "written");
    if (!SyncPath(fresh, O_RDONLY)) {
        return Failed(fresh,
                      QuotedName(fresh) + " cannot be flushed to disk (" + ErrorText() + ")");
    }
    Step(hooks, "flushed");
    error = verify(fresh);
    if (!error.empty()) {
        return Failed(fresh, "the changed copy of " + QuotedName(file) + " is not right: " + error);
    }
    Step(hooks, "verified");

    // The old file keeps its name until the new one takes it: a link, where the file
    // system has them, keeps a copy of it under the other name first.
    const fs::path previous = PreviousFile(file);
    fs::remove(previous, ignored);
    if (link(file.c_str(), previous.c_str()) != 0 && rename(file.c_str(), previous.c_str()) != 0) {
        return Failed(fresh, QuotedName(file) + " cannot be kept as " + QuotedName(previous) +
                                 " (" + ErrorText() + ")");
    }
    Step(hooks, "linked");
    if (rename(fresh.c_str(), file.c_str()) != 0) {
        return Failed(fresh, QuotedName(fresh) + " cannot take the name of " + QuotedName(file) +
                                 " (" + ErrorText() + ")");
    }
    Step(hooks, "renamed");
    SyncPath(file.parent_path().empty() ? fs::path(".") : file.parent_path(),
             O_RDONLY | O_DIRECTORY);
    return {};
}

}  // namespace regvex::system
