#pragma once
// Finds positions inside the brackets of typed values from the tokens of a file. Messages about
// rules need them, since the reader notices a broken rule only after the whole value.

#include "qrv/core/cobj.h"
#include "tools/qrv/rules/tokens.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

class cSource {
  public:
    // Borrows the bytes. Everything else is created when it is first needed.
    explicit cSource(std::string const &bytes) : tokens_(bytes) {}

    cTextTokens &tokens() { return tokens_; }
    // Call if the text was read without errors: then the tokens that the reader showed suffice, and
    // the text is not scanned again.
    void reader_showed_all() { reader_showed_all_ = true; }

    struct cEntry {
        objref key;
        cPlace place;                // the position of the key
        std::optional<cPlace> value; // empty if there is no value
        std::string text;            // the value's first token
    };
    // The entries, with single tokens as keys, of the typed value that begins at `typed`.   O(its
    // text)
    std::vector<cEntry> entries(cPlace typed) const;

    struct cTyped {
        std::string type;
        cPlace place;
        std::vector<cEntry> entries;
        std::optional<cPlace> after; // text after the first value in the brackets
    };
    // Calls `visit` for each typed value of a wanted type at its end, in one walk over the text.
    // Skips values that are nested deeper than the reader accepts.
    void typed_values(std::function<bool(std::string const &type)> const &wanted,
                      std::function<void(cTyped const &)> const &visit) const;

    // The only token between the brackets of the typed value that begins at `typed`; empty if there
    // isn't exactly one.
    std::optional<std::string> argument(cPlace typed) const;

    // The name of the type of the value that begins at `value`, from its first tokens; empty if
    // they don't show it, as in references.
    std::optional<std::string> type_at(cPlace value) const;

    // The position of the last successful declaration of a type, or of its key, before `before`.
    // Empty for types that are declared elsewhere.
    std::optional<cPlace> declared(std::string const &type, cPlace before);
    std::optional<cPlace> declared(std::string const &type, objref const &key, cPlace before);
    // The position of the attspec of the key in that declaration.
    std::optional<cPlace> specified(std::string const &type, objref const &key, cPlace before);
    // Is one of the positions inside a declaration of the type?
    bool has_in_declaration(std::string const &type, std::set<cPlace> const &places);
    // Did a declaration of the type fail before this position?
    bool has_failed(std::string const &type, cPlace before);
    // The name of the type whose declaration has its value at this position.   O(declarations)
    std::optional<std::string> declared_name(cPlace value);
    // Call if the declaration with its value at this position has failed.
    void failed(cPlace value) { failed_.insert(value); }

    struct cBracket {
        cPlace place;
        char kind; // the kind of container: vector( ends with ] just as [ does, and so on
    };
    std::vector<cBracket> brackets() const; // in order   O(the text)

    struct cWord {
        cPlace place;
        std::string text;
    };
    // The words, separated by blanks, between the brackets of the typed value that begins at
    // `typed`.
    //   O(its text)
    std::vector<cWord> words(cPlace typed) const;

  private:
    struct cKey {
        cPlace place;
        cPlace value;
    };
    struct cDeclaration {
        cPlace place; // the position of the key
        cPlace value;
        cPlace end;                                 // the position of the closing bracket
        std::unordered_map<std::string, cKey> keys; // as_text
    };
    // The declarations of each name, in the order of the file.
    using cDeclarations = std::unordered_map<std::string, std::vector<cDeclaration>>;
    class cDeclarationWalk;

    std::vector<cTextToken> const &known() const;
    cDeclarations &declarations();
    cDeclaration const *last(std::string const &type, cPlace before, bool failed);
    cKey const *last(std::string const &type, objref const &key, cPlace before);

    cTextTokens tokens_;
    bool reader_showed_all_ = false;
    std::set<cPlace> failed_;
    bool searched_ = false;
    cDeclarations declarations_;
};
