#include "tools/qrv/rules/source.h"

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <istream>
#include <streambuf>
#include <utility>

namespace {

// The bytes from an offset on, where they are.
class cPiece : public std::streambuf {
  public:
    cPiece(std::string const &bytes, size_t offset) {
        char *const start = const_cast<char *>(bytes.data());
        setg(start, start + std::min(offset, bytes.size()), start + bytes.size());
    }
};

bool is_opening(int code) { return code == '(' || code == '{' || code == '[' || code == '<'; }
bool is_closing(int code) { return code == ')' || code == '}' || code == ']' || code == '>'; }
bool is_separator(int code) { return code == ';' || code == ','; }
bool may_be_key(int code) { return (code >= tkInt && code <= tkIdent) || code == tkBadIdent; }

class cScanner : public cAttrScanner {
  public:
    using cAttrScanner::cAttrScanner;
    using cAttrScanner::gettoken;
};

// Tokens without blanks and comments, each with its place, and the token before.
class cTokens {
  public:
    cTokens(std::string const &bytes, size_t offset, cPlace start)
        : piece_(bytes, offset), is_(&piece_), scanner_(is_), start_(start) {}
    cTokens(cTokens const &) = delete;
    cTokens &operator=(cTokens const &) = delete;
    ~cTokens() = default;

    bool next() {
        before_ = token_;
        before_place_ = place_;
        do scanner_.gettoken(token_);
        while (token_.code == tkComment);
        place_ = {start_.line + token_.line - 1,
                  token_.column + (token_.line == 1 ? start_.column : 1)};
        return token_.code > tkEof;
    }
    cAttrLiteral const &token() const { return token_; }
    cAttrLiteral const &before() const { return before_; }
    cPlace place() const { return place_; }
    cPlace before_place() const { return before_place_; }

  private:
    cPiece piece_;
    std::istream is_;
    cScanner scanner_;
    cPlace start_;
    cAttrLiteral token_, before_;
    cPlace place_, before_place_;
};

objref key_of(cAttrLiteral const &token) {
    objref key;
    if (!may_be_key(token.code)) return key;
    if (token.code == tkBadIdent) return cat::of(token.text);
    if (!cat::read_stdtype(token.code, token.text.c_str(), key)) key = nullptr;
    return key;
}

// Walks over the entries of brackets: `key = value` at the depth where it began.
class cEntries {
  public:
    explicit cEntries(cTokens &tokens) : tokens_(tokens) {}

    // True at the first token of each value. The reader skips separators before a value. False
    // after the closing bracket, and at the end of the text.
    bool next() {
        while (!closed_ && tokens_.next()) {
            int const code = tokens_.token().code;
            bool const behind_equals = depth_ == 0 && key_ && !is_separator(code);
            if (!behind_equals && code == '=' && depth_ == 0) take_key();
            bool const ends = is_closing(code) && depth_ == 0;
            if (is_opening(code)) ++depth_;
            if (is_closing(code) && depth_-- == 0) closed_ = true;
            if (!behind_equals) continue;
            has_value_ = !ends;
            return true;
        }
        return false;
    }
    cSource::cEntry entry() {
        cSource::cEntry entry{std::move(key_), key_place_, std::nullopt, ""};
        key_ = nullptr;
        if (has_value_) {
            entry.value = tokens_.place();
            entry.text = tokens_.token().text;
        }
        return entry;
    }

  private:
    void take_key() {
        key_ = key_of(tokens_.before());
        key_place_ = tokens_.before_place();
    }

    cTokens &tokens_;
    int depth_ = 0;
    bool closed_ = false;
    bool has_value_ = false;
    objref key_; // set while its value is expected
    cPlace key_place_;
};

constexpr size_t deepest = 2000; // of typed values in each other; no reading goes there

// The walk over all typed values. Of brackets that aren't wanted only their kind is kept.
class cTypedWalk {
  public:
    using cTyped = cSource::cTyped;

    cTypedWalk(std::string const &bytes, std::function<bool(std::string const &)> const &wanted,
               std::function<void(cTyped const &)> const &visit)
        : tokens_(bytes, 0, {}), wanted_(wanted), visit_(visit) {}

    void walk() {
        while (tokens_.next()) {
            int const code = tokens_.token().code;
            if (in_wanted()) take(open_.back(), code);
            if (is_closing(code)) close();
            if (is_opening(code)) open();
        }
        while (!kinds_.empty()) close();
    }

  private:
    struct cOpen {
        cTyped typed;
        objref key = nullptr; // whose value comes
        cPlace key_place = {};
        bool begun = false, ended = false; // the first value
    };

    bool in_wanted() const { return !kinds_.empty() && kinds_.back(); }

    void open() {
        bool const wanted = tokens_.before().code == tkIdent && open_.size() < deepest &&
                            wanted_(tokens_.before().text);
        kinds_.push_back(wanted);
        if (wanted)
            open_.push_back({{tokens_.before().text, tokens_.before_place(), {}, std::nullopt}});
    }

    void close() {
        if (kinds_.empty()) return;
        if (kinds_.back()) {
            visit_(open_.back().typed);
            open_.pop_back();
        }
        kinds_.pop_back();
        if (in_wanted()) open_.back().ended = true;
    }

    void take(cOpen &open, int code) {
        bool const parts = is_separator(code) || code == '=';
        if (open.key && !is_separator(code)) {
            take_entry(open, !parts && !is_closing(code));
        } else if (code == '=') {
            open.key = key_of(tokens_.before());
            open.key_place = tokens_.before_place();
        }
        if (parts)
            open.ended = open.begun;
        else if (open.ended && !open.typed.behind && !is_closing(code))
            open.typed.behind = tokens_.place();
        open.begun = true;
    }

    void take_entry(cOpen &open, bool has_value) {
        open.typed.entries.push_back({std::exchange(open.key, nullptr), open.key_place, {}, ""});
        if (!has_value) return;
        open.typed.entries.back().value = tokens_.place();
        open.typed.entries.back().text = tokens_.token().text;
    }

    cTokens tokens_;
    std::function<bool(std::string const &)> const &wanted_;
    std::function<void(cTyped const &)> const &visit_;
    std::vector<bool> kinds_; // of all open brackets: wanted?
    std::vector<cOpen> open_; // the wanted ones
};

} // namespace

std::vector<cSource::cEntry> cSource::entries(cPlace typed) const {
    std::vector<cEntry> found;
    cTokens tokens(bytes_, lines_.offset(typed), typed);
    if (!tokens.next() || !tokens.next() || !is_opening(tokens.token().code)) return found;
    cEntries entries(tokens);
    while (entries.next()) found.push_back(entries.entry());
    return found;
}

void cSource::typed_values(std::function<bool(std::string const &)> const &wanted,
                           std::function<void(cTyped const &)> const &visit) const {
    cTypedWalk(bytes_, wanted, visit).walk();
}

std::optional<std::string> cSource::argument(cPlace typed) const {
    cTokens tokens(bytes_, lines_.offset(typed), typed);
    if (!tokens.next() || !tokens.next() || !is_opening(tokens.token().code)) return std::nullopt;
    if (!tokens.next() || !may_be_key(tokens.token().code)) return std::nullopt;
    objref const value = key_of(tokens.token());
    tokens.next();
    if (!value || !is_closing(tokens.token().code)) return std::nullopt;
    return cat::as_string(value);
}

std::optional<std::string> cSource::type_at(cPlace value) const {
    cTokens tokens(bytes_, lines_.offset(value), value);
    if (!tokens.next()) return std::nullopt;
    switch (tokens.token().code) {
    case '{':
        return "map";
    case '[':
        return "vector";
    case '<':
        return "set";
    }
    objref const alone = key_of(tokens.token());
    tokens.next();
    if (is_opening(tokens.token().code))
        return tokens.before().code == tkIdent ? std::optional(tokens.before().text) : std::nullopt;
    return alone ? std::optional(alone->type().name()) : std::nullopt;
}

std::vector<cSource::cBracket> cSource::brackets() const {
    std::vector<cBracket> found;
    cTokens tokens(bytes_, 0, {});
    while (tokens.next())
        if (int const code = tokens.token().code; is_opening(code) || is_closing(code))
            found.push_back({tokens.place(), static_cast<char>(code)});
    return found;
}

std::vector<cSource::cWord> cSource::words(cPlace typed) const {
    std::vector<cWord> found;
    cTokens tokens(bytes_, lines_.offset(typed), typed);
    if (!tokens.next() || !tokens.next() || !is_opening(tokens.token().code)) return found;
    cPlace end{0, 0};
    for (int depth = 0; tokens.next();) {
        cAttrLiteral const &token = tokens.token();
        if (is_closing(token.code) && depth-- == 0) break;
        if (is_opening(token.code)) ++depth;
        if (!(tokens.place() == end)) found.push_back({tokens.place(), ""});
        found.back().text += token.text;
        end = tokens.place();
        end.column += static_cast<unsigned>(token.text.size());
    }
    return found;
}

// --- declarations ---

// One walk over all tokens: `key = attlist (` or `choice (`, and in the brackets of that `key =
// attspec`.
constexpr cPlace no_end{~0U, ~0U};

class cSource::cDeclarationWalk {
  public:
    cDeclarationWalk(std::string const &bytes, cDeclarations &found)
        : tokens_(bytes, 0, {}), found_(found) {}

    void walk() {
        while (tokens_.next()) {
            int const code = tokens_.token().code;
            if (code == '=')
                take_key();
            else if (awaits_value_ && !is_separator(code))
                take_value();
            else
                take_other();
        }
    }

  private:
    struct cOpen { // a bracket; of no declaration if null
        std::vector<cDeclaration> *declarations = nullptr;
        size_t index = 0;
    };

    void take_key() {
        key_ = key_of(tokens_.before());
        place_ = tokens_.before_place();
        awaits_value_ = key_ != nullptr;
    }

    void take_value() {
        awaits_value_ = false;
        cAttrLiteral const &token = tokens_.token();
        declares_ = token.text == "attlist" || token.text == "choice";
        specifies_ = token.text == "attspec";
        value_ = tokens_.place();
        if (!declares_) take_bracket(token.code);
    }

    void take_other() {
        int const code = tokens_.token().code;
        if (specifies_ && is_opening(code) && declaration())
            declaration()->keys[cat::as_text(key_)] = {place_, value_};
        take_bracket(code);
        declares_ = specifies_ = false;
    }

    // The declaration in whose brackets the walk is; null outside of declarations.
    cDeclaration *declaration() const {
        if (open_.empty() || !open_.back().declarations) return nullptr;
        return &(*open_.back().declarations)[open_.back().index];
    }

    void take_bracket(int code) {
        if (is_closing(code) && declaration()) declaration()->end = tokens_.place();
        if (is_closing(code) && !open_.empty()) open_.pop_back();
        if (!is_opening(code)) return;
        open_.emplace_back();
        if (!declares_) return;
        std::vector<cDeclaration> &declarations = found_[cat::as_string(key_)];
        open_.back() = {&declarations, declarations.size()};
        declarations.push_back({place_, value_, no_end, {}});
    }

    cTokens tokens_;
    cDeclarations &found_;
    std::vector<cOpen> open_;
    objref key_;
    cPlace place_, value_; // of the key and the value
    bool awaits_value_ = false;
    bool declares_ = false, specifies_ = false; // by the value's first token; brackets must follow
};

cSource::cDeclarations &cSource::declarations() {
    if (!searched_) cDeclarationWalk(bytes_, declarations_).walk();
    searched_ = true;
    return declarations_;
}

// Of those that failed, or of those that didn't, the last one whose place is before that one.
cSource::cDeclaration const *cSource::last(std::string const &type, cPlace before, bool failed) {
    auto const found = declarations().find(type);
    if (found == declarations().end()) return nullptr;
    std::vector<cDeclaration> const &all = found->second;
    auto at = std::lower_bound(all.begin(), all.end(), before,
                               [](cDeclaration const &d, cPlace place) { return d.place < place; });
    for (int steps = 0; at != all.begin() && steps < 100; ++steps)
        if ((failed_.count((--at)->value) != 0) == failed) return &*at;
    return nullptr;
}

std::optional<cPlace> cSource::declared(std::string const &type, cPlace before) {
    cDeclaration const *const declaration = last(type, before, false);
    return declaration ? std::optional(declaration->place) : std::nullopt;
}

cSource::cKey const *cSource::last(std::string const &type, objref const &key, cPlace before) {
    cDeclaration const *const declaration = last(type, before, false);
    if (!declaration) return nullptr;
    auto const found = declaration->keys.find(cat::as_text(key));
    return found == declaration->keys.end() ? nullptr : &found->second;
}

std::optional<cPlace> cSource::declared(std::string const &type, objref const &key, cPlace before) {
    cKey const *const found = last(type, key, before);
    return found ? std::optional(found->place) : std::nullopt;
}

std::optional<cPlace> cSource::specified(std::string const &type, objref const &key,
                                         cPlace before) {
    cKey const *const found = last(type, key, before);
    return found ? std::optional(found->value) : std::nullopt;
}

bool cSource::has_in_declaration(std::string const &type, std::set<cPlace> const &places) {
    auto const found = declarations().find(type);
    if (found == declarations().end()) return false;
    return std::any_of(found->second.begin(), found->second.end(), [&](cDeclaration const &d) {
        auto const place = places.lower_bound(d.place);
        return place != places.end() && *place <= d.end;
    });
}

bool cSource::has_failed(std::string const &type, cPlace before) {
    return last(type, before, true) != nullptr;
}

std::optional<std::string> cSource::declared_name(cPlace value) {
    for (auto const &[name, all] : declarations())
        for (cDeclaration const &declaration : all)
            if (declaration.value == value) return name;
    return std::nullopt;
}
