// An image is made of words, each with its length in front: `5:Pixel`. An object's is the word of
// its kind, then what it holds; one that was met before is its number. The last word is the
// number of objects. What is still to do stands on a stack of its own, for references make values
// deeper than any text could be nested.

#include "tools/qrv/verify/fingerprint.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <cstring>
#include <unordered_map>
#include <vector>

namespace {

template <class T> std::string bytes_of(cObj const &value) {
    T const number = static_cast<cObjDR<T> const &>(value).val();
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

class cImage {
  public:
    std::string of(objref const &value) {
        later(value);
        while (!todo_.empty()) {
            objref const next = std::move(todo_.back());
            todo_.pop_back();
            add(next);
        }
        word(std::to_string(numbers_.size()));
        return std::move(image_);
    }

  private:
    void word(std::string const &text) { image_ += std::to_string(text.size()) + ":" + text; }

    // What is put here first is added last.
    void later(objref const &value) { todo_.push_back(value); }

    void add(objref const &value) {
        if (!value) return word("null");
        if (cAttrNode const *const constant = cat::find_const(value.get()))
            return word('#' + constant->key_as_string());
        auto const [seen, fresh] = numbers_.emplace(value.get(), numbers_.size());
        if (!fresh) return word('@' + std::to_string(seen->second));
        kept_.push_back(value); // its address is not used again
        if (value->is_type()) return add_type(static_cast<cTypeObj &>(*value));
        word(value->type().name());
        if (!add_scalar(*value)) add_other(value);
    }

    bool add_scalar(cObj const &value) {
        cTypeObj const &type = value.type();
        if (&type == &cat::type_string())
            word(static_cast<cObjDR<std::string> const &>(value).val());
        else if (&type == &cat::type_bool())
            word(bytes_of<bool>(value));
        else if (&type == &cat::type_int())
            word(bytes_of<int>(value));
        else if (&type == &cat::type_float())
            word(bytes_of<float>(value));
        else if (&type == &cat::type_double())
            word(bytes_of<double>(value));
        else
            return false;
        return true;
    }

    void add_other(objref const &value) {
        if (auto const *const spec = dynamic_cast<cAttspec const *>(value.get()))
            return add_specification(*spec);
        if (auto const *const map = dynamic_cast<cMapObj const *>(value.get()))
            return add_entries(map->datamap(), !cObj::is_vector(value) && !cObj::is_set(value));
        if (auto const *const place = dynamic_cast<cIterObj const *>(value.get()))
            return later(place->key());
        word(cat::as_text(value));
    }

    // What a type declares: a map of specifications, or choices.
    void add_type(cTypeObj const &type) {
        word(type.type().name());
        word(type.name());
        for (char const *const member : {"attspec", "choices"})
            if (objref const declared = type.tmember(member); cObj::is_good(declared))
                later(declared);
    }

    void add_specification(cAttspec const &spec) {
        word(std::to_string(spec.flags_of(asf_all)));
        word(spec.get_type() ? spec.get_type()->name() : "");
        later(spec.get_default());
    }

    void add_entries(cAttrHash const &hash, bool keyed) {
        word(std::to_string(hash.used()));
        for (cAttrNode const *node = hash.last(); node; node = hash.prev(node)) {
            later(node->valref());
            if (keyed) later(node->key());
        }
    }

    cat::ExactText const exact_;
    std::string image_;
    std::vector<objref> todo_;
    std::vector<objref> kept_;
    std::unordered_map<cObj const *, size_t> numbers_;
};

// The last word of a fingerprint.
size_t objects_in(std::string const &image) {
    return std::stoul(image.substr(image.rfind(':') + 1));
}

} // namespace

std::string image_of(objref const &value) { return cImage().of(value); }

std::string what_differs(std::string const &image, std::string const &again, bool canonical) {
    if (!again.empty() && objects_in(again) > objects_in(image))
        return "shared values would become copies";
    if (canonical) return "digits, bits or strings would differ";
    return again.empty() ? "it cannot be read"
                         : "types, objects of them or equal values in a set would differ";
}
