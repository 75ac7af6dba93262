#pragma once
// A file written beside the one whose place it takes.
//
//   without a name (O_TMPFILE) --link--> named --rename--> the target
//   named from the start                       --rename--> the target
//
// The first is the rule, so that a killed process can leave a file only between link and rename.
// The second is for file systems that have no files without names, or can't name them later. A
// named file is called `.qrv<process>-<number>~`, and its process holds an exclusive lock on it
// until the rename. So a file of that name that can be locked was left by a killed process, or was
// created a moment ago; then its process sees that the name is lost and creates another file.

#include "base/platform/cdescriptor.h"
#include "qrv/base/platform/cplatform.h"

#include <string>
#include <string_view>

namespace cat {

enum class cOutcome { done, failed, not_possible };

bool bring_to_disk(int descriptor); // true also where the file system can't do that

Content content_of(std::string_view bytes); // borrowed

class cBeside {
  public:
    // What the file shall hold, and the file whose owner, attributes and mode it shall have: its
    // path and its status, which is null if there is no such file. All borrowed.
    struct cContent {
        std::string const &path;
        struct stat const *old;
        Content content;
    };

    // In the folder of `target`, which is not a symbolic link.
    cBeside(std::string target, cContent const &content)
        : target_(std::move(target)), content_(content) {}
    cBeside(cBeside const &) = delete;
    cBeside &operator=(cBeside const &) = delete;
    ~cBeside() { remove(); } // unless it was renamed; errno stays

    // A file that must have another owner is one without rights for others, instead of
    // `not_possible`.
    void may_be_narrow() { narrow_ = true; }

    cOutcome write();     // creates the file, and brings it to the disk
    cOutcome rename();    // to the target, whatever has that name
    bool rename_to_new(); // EEXIST if something has that name

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
    std::string name_; // empty: it has none
    cDescriptor file_;
};

} // namespace cat
