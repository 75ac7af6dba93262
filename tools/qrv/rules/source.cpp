#include "tools/qrv/rules/source.h"

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <utility>

namespace {

bool may_be_key(int code) { return (code >= tkInt && code <= tkIdent) || code == tkBadIdent; }

// Tokens without comments, each with the one before it.
class cTokens {
  public:
    // Starts at a position at which a token begins.
    cTokens(cTextTokens const &text, std::vector<cTextToken> const &tokens, cPlace from)
        : text_(text), end_(tokens.end()),
          next_(std::lower_bound(
              tokens.begin(), tokens.end(), from,
              [](cTextToken const &token, cPlace place) { return token.place < place; })) {}

    bool next() {
        before_ = token_;
        while (next_ != end_ && next_->code == tkComment) ++next_;
        token_ = next_ == end_ ? cTextToken() : *next_++;
        return token_.code > tkEof;
    }
    cTextToken const &token() const { return token_; }
    cTextToken const &before() const { return before_; }
    cPlace place() const { return token_.place; }
    std::string text() const { return text(token_); }
    std::string text(cTextToken const &token) const { return std::string(text_.text(token)); }

    objref key_of(cTextToken const &token) const {
        objref key;
        if (!may_be_key(token.code)) return key;
        if (token.code == tkBadIdent) return cat::of(text(token));
        if (!cat::read_stdtype(token.code, text(token).c_str(), key)) key = nullptr;
        return key;
    }

  private:
    cTextTokens const &text_;
    std::vector<cTextToken>::const_iterator end_, next_;
    cTextToken token_, before_;
};

// Walks over the entries inside brackets: `key = value` at the depth at which the walk began.
class cEntries {
  public:
    explicit cEntries(cTokens &tokens) : tokens_(tokens) {}

    // Moves to the first token of the next value. Skips separators before a value, as the reader
    // does. False after the closing bracket, and at the end of the text.
    bool next() {
        while (!closed_ && tokens_.next()) {
            int const code = tokens_.token().code;
            bool const after_equals = depth_ == 0 && key_ && !cat::is_separator(code);
            if (!after_equals && code == '=' && depth_ == 0) take_key();
            bool const ends = cat::is_closing(code) && depth_ == 0;
            if (cat::is_opening(code)) ++depth_;
            if (cat::is_closing(code) && depth_-- == 0) closed_ = true;
            if (!after_equals) continue;
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
            entry.text = tokens_.text();
        }
        return entry;
    }

  private:
    void take_key() {
        key_ = tokens_.key_of(tokens_.before());
        key_place_ = tokens_.before().place;
    }

    cTokens &tokens_;
    int depth_ = 0;
    bool closed_ = false;
    bool has_value_ = false;
    objref key_; // set while its value is expected
    cPlace key_place_;
};

constexpr size_t deepest = 2000; // levels of typed values, more than the reader accepts

// Walks over all typed values. For other brackets it stores only that they are not wanted.
class cTypedWalk {
  public:
    using cTyped = cSource::cTyped;

    cTypedWalk(cTokens const &tokens, std::function<bool(std::string const &)> const &wanted,
               std::function<void(cTyped const &)> const &visit)
        : tokens_(tokens), wanted_(wanted), visit_(visit) {}

    void walk() {
        while (tokens_.next()) {
            int const code = tokens_.token().code;
            if (in_wanted()) take(open_.back(), code);
            if (cat::is_closing(code)) close();
            if (cat::is_opening(code)) open();
        }
        while (!kinds_.empty()) close();
    }

  private:
    struct cOpen {
        cTyped typed;
        objref key = nullptr; // the key of the next value
        cPlace key_place = {};
        bool begun = false, ended = false; // has the first value begun, and ended?
    };

    bool in_wanted() const { return !kinds_.empty() && kinds_.back(); }

    void open() {
        std::string const name = tokens_.text(tokens_.before());
        bool const wanted =
            tokens_.before().code == tkIdent && open_.size() < deepest && wanted_(name);
        kinds_.push_back(wanted);
        if (wanted) open_.push_back({{name, tokens_.before().place, {}, std::nullopt}});
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
        bool const parts = cat::is_separator(code) || code == '=';
        if (open.key && !cat::is_separator(code)) {
            take_entry(open, !parts && !cat::is_closing(code));
        } else if (code == '=') {
            open.key = tokens_.key_of(tokens_.before());
            open.key_place = tokens_.before().place;
        }
        if (parts)
            open.ended = open.begun;
        else if (open.ended && !open.typed.after && !cat::is_closing(code))
            open.typed.after = tokens_.place();
        open.begun = true;
    }

    void take_entry(cOpen &open, bool has_value) {
        open.typed.entries.push_back({std::exchange(open.key, nullptr), open.key_place, {}, ""});
        if (!has_value) return;
        open.typed.entries.back().value = tokens_.place();
        open.typed.entries.back().text = tokens_.text();
    }

    cTokens tokens_;
    std::function<bool(std::string const &)> const &wanted_;
    std::function<void(cTyped const &)> const &visit_;
    std::vector<bool> kinds_; // for each open bracket: is it wanted?
    std::vector<cOpen> open_; // the wanted ones
};

} // namespace

std::vector<cTextToken> const &cSource::known() const {
    return reader_showed_all_ ? tokens_.typed() : tokens_.all();
}

std::vector<cSource::cEntry> cSource::entries(cPlace typed) const {
    std::vector<cEntry> found;
    cTokens tokens(tokens_, known(), typed);
    if (!tokens.next() || !tokens.next() || !cat::is_opening(tokens.token().code)) return found;
    cEntries entries(tokens);
    while (entries.next()) found.push_back(entries.entry());
    return found;
}

void cSource::typed_values(std::function<bool(std::string const &)> const &wanted,
                           std::function<void(cTyped const &)> const &visit) const {
    cTypedWalk(cTokens(tokens_, known(), {}), wanted, visit).walk();
}

std::optional<std::string> cSource::argument(cPlace typed) const {
    cTokens tokens(tokens_, known(), typed);
    if (!tokens.next() || !tokens.next() || !cat::is_opening(tokens.token().code))
        return std::nullopt;
    if (!tokens.next() || !may_be_key(tokens.token().code)) return std::nullopt;
    objref const value = tokens.key_of(tokens.token());
    tokens.next();
    if (!value || !cat::is_closing(tokens.token().code)) return std::nullopt;
    return cat::as_string(value);
}

std::optional<std::string> cSource::type_at(cPlace value) const {
    cTokens tokens(tokens_, known(), value);
    if (!tokens.next()) return std::nullopt;
    switch (tokens.token().code) {
    case '{':
        return "map";
    case '[':
        return "vector";
    case '<':
        return "set";
    }
    objref const alone = tokens.key_of(tokens.token());
    tokens.next();
    if (cat::is_opening(tokens.token().code))
        return tokens.before().code == tkIdent ? std::optional(tokens.text(tokens.before()))
                                               : std::nullopt;
    return alone ? std::optional(alone->type().name()) : std::nullopt;
}

std::vector<cSource::cBracket> cSource::brackets() const {
    std::vector<cBracket> found;
    cTokens tokens(tokens_, tokens_.all(), {});
    while (tokens.next()) {
        int const code = tokens.token().code;
        if (!cat::is_opening(code) && !cat::is_closing(code)) continue;
        std::string_view const type = code == '(' ? tokens_.text(tokens.before()) : "";
        char const kind = type == "vector" ? '['
                          : type == "set"  ? '<'
                          : type == "map"  ? '{'
                                           : static_cast<char>(code);
        found.push_back({tokens.place(), kind});
    }
    return found;
}

std::vector<cSource::cWord> cSource::words(cPlace typed) const {
    std::vector<cWord> found;
    cTokens tokens(tokens_, known(), typed);
    if (!tokens.next() || !tokens.next() || !cat::is_opening(tokens.token().code)) return found;
    cPlace end{0, 0};
    for (int depth = 0; tokens.next();) {
        cTextToken const &token = tokens.token();
        if (cat::is_closing(token.code) && depth-- == 0) break;
        if (cat::is_opening(token.code)) ++depth;
        if (!(tokens.place() == end)) found.push_back({tokens.place(), ""});
        found.back().text += tokens.text();
        end = tokens.place();
        end.column += token.size;
    }
    return found;
}

// --- declarations ---

// Finds declarations in one walk over all tokens: `key = attlist (` or `key = choice (`, and inside
// the brackets `key = attspec`.
constexpr cPlace no_end{~0U, ~0U};

class cSource::cDeclarationWalk {
  public:
    cDeclarationWalk(cTokens const &tokens, cDeclarations &found)
        : tokens_(tokens), found_(found) {}

    void walk() {
        while (tokens_.next()) {
            int const code = tokens_.token().code;
            if (code == '=')
                take_key();
            else if (awaits_value_ && !cat::is_separator(code))
                take_value();
            else
                take_other();
        }
    }

  private:
    struct cOpen { // a bracket; null if it is not one of a declaration
        std::vector<cDeclaration> *declarations = nullptr;
        size_t index = 0;
    };

    void take_key() {
        key_ = tokens_.key_of(tokens_.before());
        place_ = tokens_.before().place;
        awaits_value_ = key_ != nullptr;
    }

    void take_value() {
        awaits_value_ = false;
        std::string const text = tokens_.text();
        declares_ = text == "attlist" || text == "choice";
        specifies_ = text == "attspec";
        value_ = tokens_.place();
        if (!declares_) take_bracket(tokens_.token().code);
    }

    void take_other() {
        int const code = tokens_.token().code;
        if (specifies_ && cat::is_opening(code) && declaration())
            declaration()->keys[cat::as_text(key_)] = {place_, value_};
        take_bracket(code);
        declares_ = specifies_ = false;
    }

    // The declaration whose brackets contain the current token; null outside of declarations.
    cDeclaration *declaration() const {
        if (open_.empty() || !open_.back().declarations) return nullptr;
        return &(*open_.back().declarations)[open_.back().index];
    }

    void take_bracket(int code) {
        if (cat::is_closing(code) && declaration()) declaration()->end = tokens_.place();
        if (cat::is_closing(code) && !open_.empty()) open_.pop_back();
        if (!cat::is_opening(code)) return;
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
    cPlace place_, value_; // the positions of the key and the value
    bool awaits_value_ = false;
    bool declares_ = false, specifies_ = false; // from the value's first token, before its bracket
};

cSource::cDeclarations &cSource::declarations() {
    if (!searched_) cDeclarationWalk(cTokens(tokens_, tokens_.all(), {}), declarations_).walk();
    searched_ = true;
    return declarations_;
}

// The last failed, or the last successful, declaration before `before`.
cSource::cDeclaration const *cSource::last(std::string const &type, cPlace before, bool failed) {
    auto const found = declarations().find(type);
    if (found == declarations().end()) return nullptr;
    std::vector<cDeclaration> const &all = found->second;
    auto at = std::lower_bound(all.begin(), all.end(), before,
                               [](cDeclaration const &d, cPlace place) { return d.place < place; });
    // A limit: in a large file with many declarations of one name the search would take quadratic
    // time.
    constexpr int most_steps = 100;
    for (int steps = 0; at != all.begin() && steps < most_steps; ++steps)
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
