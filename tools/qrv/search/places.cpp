#include "tools/qrv/search/places.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <locale>
#include <optional>
#include <sstream>

namespace {

bool is_separator(int code) { return code == ';' || code == ','; }

class cPlacesScan : public cAttrScan {
  public:
    cPlacesScan(std::istream &is, std::set<std::string> const &paths)
        : cAttrScan(is, false), wanted_(paths) {}

    cPlaces read() {
        gettok(token_);
        value();
        return std::move(places_);
    }

  private:
    // Each begins at a token and ends at the one behind what it is about. Was it a single token?
    bool value() {
        if (wanted_.count(path_))
            places_.insert_or_assign(path_, cPlace{token_.line, token_.column + 1});
        int const first = token_.code;
        if (first == '{' || first == '[' || first == '<') {
            container(first);
            return false;
        }
        bool const may_be_typed = first == tkIdent || first == tkConst;
        gettok(token_);
        cat::Brackets const brackets(token_.code);
        if (!may_be_typed || brackets.open == 0) return true;
        read_subentry(brackets, nullptr);
        gettok(token_);
        return false;
    }

    void value(std::string const &key, bool &plain) {
        size_t const size = path_.size();
        path_ += '/' + key;
        plain = value();
        path_.resize(size);
    }

    void container(int open) {
        char const close = open == '{' ? '}' : open == '[' ? ']' : '>';
        std::set<std::string> met; // in a set
        bool counted = true;       // is the index known?
        gettok(token_);
        for (int index = 0; token_.code != close && token_.code != tkEof;) {
            if (is_separator(token_.code) || token_.code == '=') {
                gettok(token_);
                continue;
            }
            bool plain = true;
            if (open == '{') {
                std::string const key = this->key().value_or("?");
                value(key, plain);
            } else {
                bool const fresh = open == '[' || may_be_new(met);
                value(counted && fresh ? std::to_string(index) : "?", plain);
                index += fresh;
                if (open == '<') counted = counted && plain;
            }
        }
        gettok(token_);
    }

    // A set takes an equal value once. What is more than a token can't be compared here.
    bool may_be_new(std::set<std::string> &met) const {
        objref value;
        if (token_.code < tkInt || token_.code > tkIdent ||
            !cat::read_stdtype(token_.code, token_.text.c_str(), value) || !value)
            return true;
        return met.insert(cat::as_text(value)).second;
    }

    // Nothing for a key that isn't a single token, or is missing.
    std::optional<std::string> key() {
        cAttrLiteral const first = token_;
        objref key;
        if (first.code < tkInt || first.code > tkIdent ||
            !cat::read_stdtype(first.code, first.text.c_str(), key) || !key)
            return std::nullopt;
        gettok(token_);
        if (token_.code == '=') {
            gettok(token_);
            return cat::as_text(key);
        }
        ungettoken(token_);
        token_ = first;
        return std::nullopt;
    }

    std::set<std::string> const &wanted_;
    cAttrLiteral token_;
    std::string path_;
    cPlaces places_;
};

} // namespace

cPlaces places_in(std::string const &bytes, std::set<std::string> const &paths) {
    cat::ExactText const exact;
    std::istringstream is(bytes);
    is.imbue(std::locale::classic());
    return cPlacesScan(is, paths).read();
}
