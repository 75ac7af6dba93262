#pragma once
// A file that is written next to the target and then replaces it.
//
//   without a name (O_TMPFILE) --link--> named --rename--> the target
//   named from the start                       --rename--> the target
//
// The first method is the normal one: a killed process can leave a file only between link and
// rename. The second serves file systems that have no unnamed files or cannot name them later. A
// named file is called `.qrv<process>-<number>~`, and its process holds an exclusive lock on it
// until the rename. So a file of that name that can be locked was left by a killed process, or was
// created a moment ago; in the second case its process notices that the name was removed and
// creates another file.

#include "base/platform/cdescriptor.h"
#include "qrv/base/platform/cplatform.h"

#include <string>
#include <string_view>

namespace cat {

enum class cOutcome { done, failed, not_possible };

bool bring_to_disk(int descriptor); // true also if the file system does not support it

Content content_of(std::string_view bytes); // borrowed

class cBeside {
  public:
    // The content of the new file, and the file whose owner, attributes and mode it gets: its path
    // and its status, which is null if that file does not exist. All borrowed.
    struct cContent {
        std::string const &path;
        struct stat const *old;
        Content content;
    };

    // Creates the file in the folder of `target`, which is not a symbolic link.
    cBeside(std::string target, cContent const &content)
        : target_(std::move(target)), content_(content) {}
    cBeside(cBeside const &) = delete;
    cBeside &operator=(cBeside const &) = delete;
    ~cBeside() { remove(); } // unless it was renamed; preserves errno

    // A file whose owner cannot be set then gets no rights for others, instead of failing with
    // `not_possible`.
    void may_be_narrow() { narrow_ = true; }

    cOutcome write();     // creates the file and flushes it to the disk
    cOutcome rename();    // to the target, replacing an existing file
    bool rename_to_new(); // EEXIST if the name exists

  private:
    bool create_unnamed();
    bool create_named();
    bool keeps_name() const;
    bool give_name();
    cOutcome write_named();
    cOutcome fill();
    bool take_over(struct stat const &old);
    void remove();

    std::string const target_;
    cContent const content_;
    bool narrow_ = false;
    std::string name_; // empty if the file has no name
    cDescriptor file_;
};

} // namespace cat
