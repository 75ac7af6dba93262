#include "tools/qrv/json/text.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"

namespace {

constexpr size_t piece_size = 1 << 16;

struct cObject { // creates an object with the value
    objref operator()(std::nullptr_t) const { return cat::nil(); }
    objref operator()(std::string_view text) const { return cat::of(std::string(text)); }
    template <class T> objref operator()(T value) const { return cat::of(value); }
};

} // namespace

void cJsonText::open(cLevel const &level) {
    begin_value();
    put(level.opening);
    levels_.push_back(level);
}

void cJsonText::close() {
    cLevel const level = levels_.back();
    levels_.pop_back();
    if (level.has_lines && !level.is_empty) begin_line();
    put(level.closing);
    end_value();
}

void cJsonText::key(std::string const &key) {
    begin_entry();
    put(cScalar(key));
    put('=');
    text_ += ' ';
}

void cJsonText::value(cScalar const &value) {
    begin_value();
    put(value);
    end_value();
}

void cJsonText::end() {
    text_ += '\n';
    flush();
}

// In a map, the key has already begun the entry.
void cJsonText::begin_value() {
    if (!levels_.empty() && levels_.back().opening == '[') begin_entry();
}

void cJsonText::begin_entry() {
    levels_.back().is_empty = false;
    if (levels_.back().has_lines) begin_line();
}

void cJsonText::end_value() {
    if (levels_.empty()) return;
    put(levels_.back().separator);
    if (!levels_.back().has_lines) text_ += ' ';
    if (text_.size() >= piece_size) flush();
}

void cJsonText::begin_line() {
    text_ += '\n';
    size_t const columns = levels_.empty()
                               ? 0
                               : static_cast<size_t>(cat::write_indent0) +
                                     (levels_.size() - 1) * static_cast<size_t>(cat::write_indent);
    text_.append(columns, ' ');
}

void cJsonText::put(cScalar const &value) {
    given_.add(value);
    text_ += cat::as_text(std::visit(cObject(), value));
}

void cJsonText::put(char mark) {
    given_.add_mark(mark);
    text_ += mark;
}

void cJsonText::flush() {
    refused_ = refused_ || !put_(text_);
    text_.clear();
}
