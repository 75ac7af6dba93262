#include "tools/qrv/editing/format.h"

#include "qrv/core/ctypescope.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/editing/comments.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/warnings.h"
#include "tools/qrv/verify/difference.h"

#include <optional>
#include <string>

namespace {

// The written form of the file's value. The tree itself is not stored, since the second reading
// needs the memory.
struct cWrittenAnew {
    std::string text;
    std::string fingerprint; // empty if a value could not be written
    std::string head;
    std::optional<cComments> comments;
};

cWrittenAnew written_anew(std::string const &bytes, cFormat const &how, cMessages &messages) {
    cat::TypeScope const types; // the new text must declare all its types itself
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    cWrittenAnew anew;
    if (!reading.clean) return anew;
    anew.comments.emplace(bytes, map);
    anew.comments->make_room(reading.value, map);
    anew.text = written(reading.value, "", false, messages, room_for(bytes));
    if (messages.count() == 0) anew.fingerprint = qrv::edit::fingerprint(reading.value);
    anew.head = head_of(bytes, map);
    if (how.replaces) add_lost_by_writing(bytes, map, messages);
    if (reading.after) messages.error(*reading.after, "text after the first value would be lost");
    return anew;
}

// Reads the written text, for its source map and its fingerprint.
class cSecondReading {
  public:
    cSecondReading(std::string const &text, std::string const &name) {
        cat::TypeScope const types;
        cMessages ignored(name, 1);
        cReading const reading = read_value(text, ignored);
        if (!reading.clean) return;
        fingerprint_ = qrv::edit::fingerprint(reading.value);
        is_stable_ = written(reading.value, "", false, ignored, room_for(text)) == text;
    }

    std::string const &fingerprint() const { return fingerprint_; } // empty if it has errors
    bool is_stable() const { return is_stable_; }
    cat::SourceMap const &map() const { return map_; }

  private:
    cat::SourceMap const map_;
    std::string fingerprint_;
    bool is_stable_ = false;
};

} // namespace

void format(std::string const &bytes, cFormat const &how, cMessages &messages, cReply &reply) {
    cWrittenAnew const anew = written_anew(bytes, how, messages);
    if (!anew.comments) return;
    cSecondReading const again(anew.text, messages.name());
    auto const with_comments = [&](bool trailing_blanks) {
        return (trailing_blanks ? anew.head : without_trailing_blanks(anew.head)) +
               anew.comments->put_into(anew.text, again.map(), trailing_blanks);
    };
    reply.text = with_comments(how.trailing_blanks);
    if (!anew.fingerprint.empty() && again.fingerprint() != anew.fingerprint)
        messages.error("the new text would not read as the same value: " +
                       what_differs(anew.fingerprint, again.fingerprint(), false));
    reply.is_stable = again.is_stable();
    reply.status = messages.count() == 0 ? exit_done : exit_found;
    if (how.either && reply.status == exit_done && reply.text != bytes &&
        with_comments(!how.trailing_blanks) == bytes)
        reply.text = bytes;
}
