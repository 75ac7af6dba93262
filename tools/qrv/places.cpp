#include "places.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/cattrscan.h"
#include "qrv/text/cexacttext.h"

#include <locale>
#include <optional>
#include <sstream>

namespace {

bool is_separator(int code) { return code == ';' || code == ','; }

class cPlacesScan : public cAttrScan {
  public:
    explicit cPlacesScan(std::istream &is) : cAttrScan(is, false) {}

    cPlaces read() {
        gettok(token_);
        value();
        return std::move(places_);
    }

  private:
    // Each begins at a token and ends at the one behind what it is about.
    void value() {
        places_.try_emplace(path_, cPlace{token_.line, token_.column + 1});
        int const first = token_.code;
        if (first == '{') return container('}', true);
        if (first == '[' || first == '<') return container(first == '[' ? ']' : '>', false);
        bool const may_be_typed = first == tkIdent || first == tkConst;
        gettok(token_);
        cat::Brackets const brackets(token_.code);
        if (!may_be_typed || brackets.open == 0) return;
        read_subentry(brackets, nullptr);
        gettok(token_);
    }

    void container(int close, bool keyed) {
        gettok(token_);
        for (int index = 0; token_.code != close && token_.code != tkEof;) {
            if (is_separator(token_.code) || token_.code == '=') {
                gettok(token_);
                continue;
            }
            std::optional<std::string> const key = keyed ? this->key() : std::to_string(index++);
            size_t const size = path_.size();
            path_ += '/' + key.value_or("?");
            value();
            path_.resize(size);
        }
        gettok(token_);
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

    cAttrLiteral token_;
    std::string path_;
    cPlaces places_;
};

} // namespace

cPlaces places_in(std::string const &bytes) {
    cat::ExactText const exact;
    std::istringstream is(bytes);
    is.imbue(std::locale::classic());
    return cPlacesScan(is).read();
}
