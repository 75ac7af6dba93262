#pragma once
// What stands where between the brackets of typed values, as the tokens of a file tell: for
// messages about rules, which the reader finds broken when it has read the whole of a value.

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
    // Borrows the bytes. What it needs beside them it makes when it is asked.
    explicit cSource(std::string const &bytes) : tokens_(bytes) {}

    cTextTokens &tokens() { return tokens_; }
    // The text was read without errors: the tokens that the reader showed are all that is asked
    // for from now on, and the text need not be scanned again.
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
        std::optional<cPlace> behind; // what stands behind the first value in the brackets
    };
    // Calls `visit` for each typed value of a wanted type when it ends, in one walk over the text.
    // What is deeper in each other than any reading goes is left out.
    void typed_values(std::function<bool(std::string const &type)> const &wanted,
                      std::function<void(cTyped const &)> const &visit) const;

    // The only token between the brackets of the typed value that begins there; none if there are
    // more, or none.
    std::optional<std::string> argument(cPlace typed) const;

    // Name of the type of the value that begins there, as its first tokens tell; none where they
    // don't, as of references.
    std::optional<std::string> type_at(cPlace value) const;

    // Where a type was declared last before that place, by a declaration that didn't
    // fail, or its key. None for what is declared elsewhere.
    std::optional<cPlace> declared(std::string const &type, cPlace before);
    std::optional<cPlace> declared(std::string const &type, objref const &key, cPlace before);
    // Where the attspec of the key stands in that declaration.
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
        char kind;
    };
    std::vector<cBracket> brackets() const; // all, in order   O(the text)

    struct cWord {
        cPlace place;
        std::string text;
    };
    // What blanks part between the brackets of the typed value that begins there.   O(its text)
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
