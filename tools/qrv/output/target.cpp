#include "tools/qrv/output/target.h"

#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"

#include <cerrno>

namespace {

std::string no_backup(int error) {
    if (error == EEXIST)
        return "the name of its backup is taken by something that is not a regular file";
    return reason("cannot write its backup", error);
}

} // namespace

bool cTarget::lock() {
    if (lock_) return true;
    constexpr std::chrono::seconds longest_wait = cat::FileLock::usual_wait;
    lock_.emplace(name_, options_.no_wait ? std::chrono::seconds(0) : longest_wait);
    if (!lock_->busy()) return true;
    std::string const waited =
        "has held the lock of its folder for " + std::to_string(longest_wait.count()) + " seconds";
    refuse("another process " + (options_.no_wait ? "holds the lock of its folder" : waited));
    lock_.reset();
    return false;
}

int cTarget::replace(std::string const &text, std::optional<std::string_view> expected) {
    return replace_by([&](auto const &options) { return cat::replace_file(name_, text, options); },
                      expected);
}

int cTarget::replace(cat::Content const &content) {
    return replace_by(
        [&](auto const &options) { return cat::replace_file(name_, content, options); }, {});
}

int cTarget::replace_by(std::function<cat::Replaced(cat::ReplaceOptions const &)> const &work,
                        std::optional<std::string_view> expected) {
    cWorkOn const about(name_);
    if (!lock()) return exit_failed;
    switch (work({.expected = expected, .backup = options_.backup})) {
    case cat::Replaced::done:
        return exit_done;
    case cat::Replaced::changed:
        return refuse("another program has changed it since it was read; run the command again");
    case cat::Replaced::no_backup:
        return refuse(no_backup(errno));
    default:
        put_error(name_, reason("cannot write", errno) + "; the file is unchanged");
        return exit_failed;
    }
}

int cTarget::refuse(std::string const &why) const {
    put_error(name_, "not written: " + why);
    return exit_failed;
}
