#pragma once
// The positions of what is between the brackets of typed values, found in the tokens of a file: for
// messages about rules, since the reader finds a broken rule only after the whole value.

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
    // The text was read without errors: from now on only the tokens that the reader showed are
    // needed, and the text is not scanned again.
    void reader_showed_all() { reader_showed_all_ = true; }

    struct cEntry {
        objref key;
        cPlace place;                // of the key
        std::optional<cPlace> value; // none if there is no value
        std::string text;            // the value's first token
    };
    // The entries with single tokens as keys of the typed value that begins there.   O(its text)
    std::vector<cEntry> entries(cPlace typed) const;

    struct cTyped {
        std::string type;
        cPlace place;
        std::vector<cEntry> entries;
        std::optional<cPlace> behind; // what is after the first value in the brackets
    };
    // Calls `visit` for each typed value of a wanted type when it ends, in one walk over the text.
    // Values that are nested deeper than any reading goes are left out.
    void typed_values(std::function<bool(std::string const &type)> const &wanted,
                      std::function<void(cTyped const &)> const &visit) const;

    // The only token between the brackets of the typed value that begins there; null if there is
    // not exactly one.
    std::optional<std::string> argument(cPlace typed) const;

    // The name of the type of the value that begins there, from its first tokens; null if they do
    // not show it, as those of references.
    std::optional<std::string> type_at(cPlace value) const;

    // Where a type, or its key, was declared last before that place, by a declaration that did not
    // fail. Null for what is declared elsewhere.
    std::optional<cPlace> declared(std::string const &type, cPlace before);
    std::optional<cPlace> declared(std::string const &type, objref const &key, cPlace before);
    // Where the attspec of the key is in that declaration.
    std::optional<cPlace> specified(std::string const &type, objref const &key, cPlace before);
    // Is one of the places inside a declaration of the type?
    bool has_in_declaration(std::string const &type, std::set<cPlace> const &places);
    // Has a declaration of it failed before that place?
    bool has_failed(std::string const &type, cPlace before);
    // The name of the type whose declaration's value begins there.   O(declarations)
    std::optional<std::string> declared_name(cPlace value);
    // The declaration whose value begins there has failed.
    void failed(cPlace value) { failed_.insert(value); }

    struct cBracket {
        cPlace place;
        char kind; // vector( ends with ] as [ does, and so on
    };
    std::vector<cBracket> brackets() const; // all, in order   O(the text)

    struct cWord {
        cPlace place;
        std::string text;
    };
    // The words, separated by blanks, between the brackets of the typed value that begins there.
    //   O(its text)
    std::vector<cWord> words(cPlace typed) const;

  private:
    struct cKey {
        cPlace place;
        cPlace value;
    };
    struct cDeclaration {
        cPlace place; // of the key
        cPlace value;
        cPlace end;                                 // of the closing bracket
        std::unordered_map<std::string, cKey> keys; // as_text
    };
    // By name, each in the order of the file.
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
