#pragma once
// A file that a command replaces without losing data. The old content remains if the command is
// killed or the disk is full, and changes that another process makes at the same time are not
// overwritten.

#include "qrv/base/platform/cfolderlock.h"
#include "qrv/base/platform/cplatform.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

struct cTargetOptions {
    bool no_wait = false; // fail if the folder is locked
    std::string backup;   // suffix of the old file's copy; no copy if empty
};

class cTarget {
  public:
    cTarget(std::string name, cTargetOptions const &options)
        : name_(std::move(name)), options_(options) {}

    std::string const &name() const { return name_; }

    // Locks the file's folder until the object is destroyed, and removes temporary files of killed
    // runs. A command that reads the file must call this before it reads. False, with a message, if
    // another process holds the lock.
    bool lock();

    // Replaces the content of the file under the lock. Returns an exit code. If `expected` is
    // given, the file must still have these bytes. If it can't be written, prints a message and
    // leaves it unchanged.
    int replace(std::string const &text, std::optional<std::string_view> expected = {});
    int replace(cat::Content const &content);

  private:
    int replace_by(std::function<cat::Replaced(cat::ReplaceOptions const &)> const &work,
                   std::optional<std::string_view> expected);
    int refuse(std::string const &why) const;

    std::string name_;
    cTargetOptions options_;
    std::optional<cat::FileLock> lock_;
};
