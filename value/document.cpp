// A document keeps the text of its first reading, with the source map and the records of qrv::edit
// about the tree. Each save derives the new text from that text, so two saves result in the same
// text as one save of both changes. The present content of the file is stored separately (`saved`),
// to detect what another program writes.
//
// Types are registered only while the text, or another one that uses them, is read.

#include "qrv/value/document.h"

#include "qrv/core/ctypescope.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/edit/cedit.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/text/file/creadtext.h"
#include "qrv/text/read/csourcemap.h"
#include "value/comments.h"
#include "value/reading.h"
#include "value/writing.h"
#include "value/written_file.h"

#include <algorithm>
#include <utility>

namespace qrv {

struct document::source {
    source(std::string file, std::string content, options const &reading);
    source(source const &) = delete;
    source &operator=(source const &) = delete;
    ~source() = default;

    std::string_view text() const { return cat::without_mark(bytes); }
    std::string_view mark() const {
        return std::string_view(bytes).substr(0, bytes.size() - text().size());
    }

    std::string about() const { return path.empty() ? path : path + ": "; } // for messages
    [[noreturn]] void refuse(std::string const &why) const { detail::refuse_to_write(path, why); }

    std::string path;
    std::string const bytes;
    std::optional<std::string> saved; // the content of the file, if it is not `bytes`
    options const how;
    cat::SourceMap map;
    objref root; // cat::nil() if nothing could be read
    std::vector<typeref> types;
    std::vector<cat::ReadError> errors;
    std::optional<edit::Edit> edit; // empty after errors
    std::optional<detail::comment_notes> comments;
};

document::source::source(std::string file, std::string content, options const &reading)
    : path(std::move(file)), bytes(std::move(content)), how(reading) {
    cat::TypeScope const scope;
    root = detail::read_value(text(), path, how, errors).object();
    map.stop();
    types = scope.types();
    if (!errors.empty()) return;
    edit.emplace(text(), map, root);
    comments.emplace(value(root));
}

namespace {

// Registers types as long as it exists.
class registered {
  public:
    explicit registered(std::vector<typeref> const &types) {
        for (typeref const &type : types) scope_.declare(*type, "");
    }

  private:
    cat::TypeScope scope_;
};

// Registers types that can't be read under the names of these types, so that text must declare the
// types that it uses itself: types from other text of the program are hidden.
class hidden {
  public:
    explicit hidden(std::vector<typeref> const &types) {
        for (typeref const &type : types) scope_.declare(*make<cTypeObj>(type->name().c_str()), "");
    }

  private:
    cat::TypeScope scope_;
};

// The fingerprint of the value that the text is read as; empty if it has errors.
std::string fingerprint_of(std::string_view text, options const &how,
                           std::vector<typeref> const &types) {
    hidden const others(types);
    cat::TypeScope const scope;
    std::vector<cat::ReadError> errors;
    value const read = detail::read_value(text, {}, how, errors);
    return errors.empty() ? edit::fingerprint(read.object()) : "";
}

position position_in(std::string_view text, std::size_t offset) {
    std::string_view const before = text.substr(0, offset);
    auto const lines = std::count(before.begin(), before.end(), '\n');
    std::size_t const line_begin = before.rfind('\n') + 1; // 0 in the first line
    return {static_cast<unsigned>(lines) + 1, static_cast<unsigned>(offset - line_begin) + 1};
}

// The start of the value of the last entry; empty if there are no entries.
std::optional<position> position_in(std::string_view text,
                                    std::vector<cat::SourceEntry> const &entries) {
    if (entries.empty()) return std::nullopt;
    return position_in(text, entries.back().value.begin);
}

} // namespace

// --- reading

document::document(std::unique_ptr<source> from) : source_(std::move(from)) {
    value::operator=(source_->root);
}

document::document(document &&) noexcept = default;
document &document::operator=(document &&) noexcept(false) = default;
document::~document() = default;

document document::load(std::string const &path, options const &how) {
    std::vector<cat::ReadError> errors;
    document result = load(path, errors, how);
    detail::throw_errors(errors);
    return result;
}

document document::load(std::string const &path, std::vector<cat::ReadError> &errors,
                        options const &how) {
    document result(std::make_unique<source>(path, detail::bytes_of(path), how));
    errors = result.errors();
    return result;
}

document document::parse(std::string text, options const &how) {
    std::vector<cat::ReadError> errors;
    document result = parse(std::move(text), errors, how);
    detail::throw_errors(errors);
    return result;
}

document document::parse(std::string text, std::vector<cat::ReadError> &errors,
                         options const &how) {
    document result(std::make_unique<source>(std::string(), std::move(text), how));
    errors = result.errors();
    return result;
}

std::string const &document::path() const noexcept {
    static std::string const none;
    return source_ ? source_->path : none;
}

std::vector<cat::ReadError> const &document::errors() const noexcept {
    static std::vector<cat::ReadError> const none;
    return source_ ? source_->errors : none;
}

document::source &document::own() const {
    if (!source_) throw error("the document was moved from");
    return *source_;
}

value document::read(std::string_view text, options const &how) const {
    registered const types(own().types);
    cat::TypeScope const scope;
    return qrv::parse(text, how);
}

// --- positions

// Inserting or removing an entry of a list moves values to other nodes. So the node at the path may
// have had another value in the text: then the position is that of the value.
std::optional<position> document::position_of(std::string_view path) const {
    std::optional<value> const found = find(path);
    if (!found) return std::nullopt;
    objref const object = found->object();
    cat::CaughtErrors const ignored;
    auto const entries = own().map.spans(*this->object(), std::string(path));
    bool const in_list = !entries.empty() && entries.back().key.empty();
    if (in_list && entries.back().obid != object->obid()) return position_of_object(object);
    return position_in(own().text(), entries);
}

std::optional<position> document::position_of_object(objref const &object) const {
    return position_in(own().text(), own().map.written(*object));
}

// --- saving

std::string document::text() const {
    source const &from = own();
    if (!from.edit) from.refuse("it was read with errors");
    return std::string(from.mark()) + text_with_comments(changed_text());
}

void document::save() {
    source &from = own();
    if (from.path.empty()) from.refuse("the document has no file; save_as() gives it one");
    std::string text = this->text();
    detail::replace_file(from.path, text, from.saved ? *from.saved : from.bytes);
    from.saved = std::move(text);
}

void document::save_as(std::string const &path) {
    source &from = own();
    std::string text = this->text();
    detail::replace_file(path, text);
    from.path = path;
    from.saved = std::move(text);
}

// Reads the new text again: its value must be the same. If it differs, a repeated key may be the
// reason, so a second try writes such a key only once instead of at each position.
std::string document::changed_text() const {
    using Repeated = edit::Edit::Repeated;
    cat::CaughtErrors const ignored; // the comparison detects values without text
    if (is_nil() && !cObj::is_nil(source_->root))
        source_->refuse("its value is #nil, as after a move into a qrv::value");
    if (object() == source_->root && !source_->edit->changed()) return std::string(source_->text());
    std::string const expected = edit::fingerprint(object());
    for (Repeated const repeated : {Repeated::each, Repeated::once}) {
        std::string text = object() == source_->root
                               ? source_->edit->text(repeated) // RUNS USER CODE
                               : text_with_new_root();
        if (fingerprint_of(text, source_->how, source_->types) == expected) return text;
    }
    std::string const anew = detail::written(*this, {}, source_->about());
    source_->refuse(fingerprint_of(anew, source_->how, source_->types) == expected
                        ? "this change can't be made in its text; qrv::save() writes it anew"
                        : "no text can be read as the changed value");
}

std::string document::text_with_comments(std::string text) const {
    cat::CaughtErrors const ignored; // a member `//` that is not text is not a comment
    std::vector<cObj const *> const changed = source_->comments->changed(*this);
    if (changed.empty()) return text;
    hidden const others(source_->types);
    cat::TypeScope const scope;
    value failed;
    std::string result =
        detail::with_comments(std::move(text), *this, changed, source_->how, failed);
    if (!result.empty()) return result;
    std::vector<std::string> const paths = paths_of(failed);
    source_->refuse((paths.empty() ? std::string() : paths.front() + ": ") +
                    "this comment can't be set in its text; qrv::save() writes it anew");
}

std::string document::text_with_new_root() const {
    std::string text(source_->text());
    cat::Span const old = source_->map.entry(0).value;
    return text.replace(old.begin, old.size(), detail::written(*this, {}, source_->about()));
}

} // namespace qrv
