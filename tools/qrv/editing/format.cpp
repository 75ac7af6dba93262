#include "tools/qrv/editing/format.h"

#include "qrv/core/ctypescope.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/editing/comments.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/warnings.h"
#include "tools/qrv/verify/fingerprint.h"

#include <optional>
#include <utility>

namespace {

// Of the text that was written.
class cSecondReading {
  public:
    cSecondReading(std::string const &text, std::string const &name)
        : messages_(name, 1), reading_(read_value(text, messages_)) {
        if (!reading_.clean) return;
        image_ = image_of(reading_.value);
        comes_back_ = written(reading_.value, "", false, messages_) == text;
    }

    std::string const &image() const { return image_; } // empty if it has errors
    bool comes_back() const { return comes_back_; }
    cat::SourceMap const &map() const { return map_; }

  private:
    cat::TypeScope const types_;
    cat::SourceMap const map_;
    cMessages messages_;
    cReading reading_;
    std::string image_;
    bool comes_back_ = false;
};

} // namespace

void format(std::string const &bytes, cFormat const &how, cMessages &messages, cReply &reply) {
    std::optional<cat::TypeScope> types(std::in_place);
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    if (!reading.clean) return;
    cComments const comments(bytes, map);
    comments.make_room(reading.value);
    std::string const text = written(reading.value, "", false, messages);
    bool const all_written = messages.count() == 0;
    std::string const image = all_written ? image_of(reading.value) : "";
    types.reset(); // the new text must declare its own
    cSecondReading const again(text, messages.name());
    std::string const head = head_of(bytes, map);
    auto const with_comments = [&](bool trailing_blanks) {
        return (trailing_blanks ? head : without_trailing_blanks(head)) +
               comments.put_into(text, again.map(), trailing_blanks);
    };
    reply.text = with_comments(how.trailing_blanks);
    if (how.replaces) add_lost_by_writing(bytes, map, messages);
    if (reading.behind) messages.error(*reading.behind, "text after the first value would be lost");
    if (all_written && again.image() != image)
        messages.error("the new text would not read as the same value: " +
                       what_differs(image, again.image(), false));
    reply.comes_back = again.comes_back();
    reply.status = messages.count() == 0 ? exit_done : exit_found;
    if (how.either && reply.status == exit_done && reply.text != bytes &&
        with_comments(!how.trailing_blanks) == bytes)
        reply.text = bytes;
}
