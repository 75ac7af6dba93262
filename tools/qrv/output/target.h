#pragma once
// A file that a command writes, so that nothing is lost: neither its content when the command is
// killed or the disk is full, nor what another process writes to it at the same time.

#include "qrv/base/platform/cfolderlock.h"
#include "qrv/base/platform/cplatform.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

struct cTargetOptions {
    bool no_wait = false; // for a locked folder
    std::string backup;   // suffix of the old file's copy; empty: none
};

class cTarget {
  public:
    cTarget(std::string name, cTargetOptions const &options)
        : name_(std::move(name)), options_(options) {}

    std::string const &name() const { return name_; }

    // Holds the lock of the file's folder from now on, and removes what killed runs left there. A
    // command that reads the file calls it before. False, with a message, if another has the lock.
    bool lock();

    // Gives the file that content, under the lock; an exit code. With `expected` the file must
    // still hold these bytes. If it can't be written, a message says so and it stays as it was.
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
