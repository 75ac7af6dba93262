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

#include <charconv>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

template <class T> T const &value_in(cObj const &value) {
    return static_cast<cObjDR<T> const &>(value).val();
}

// Objects by address, each with the number of those before it: for trees with very many.
class cNumbers {
  public:
    size_t size() const { return size_; }

    struct cFound {
        size_t number;
        bool fresh;
    };
    cFound add(cObj const *object) {
        if (4 * size_ >= 3 * objects_.size()) grow();
        size_t const slot = slot_of(object);
        bool const fresh = !objects_[slot];
        if (fresh) {
            objects_[slot] = object;
            numbers_[slot] = static_cast<std::uint32_t>(size_++);
        }
        return {numbers_[slot], fresh};
    }

  private:
    // Of the object, or for it.
    size_t slot_of(cObj const *object) const {
        auto const address = static_cast<std::uint64_t>(std::hash<cObj const *>()(object));
        size_t slot = static_cast<size_t>(address / 16 * 0x9E3779B97F4A7C15u >> shift_);
        while (objects_[slot] && objects_[slot] != object) slot = (slot + 1) % objects_.size();
        return slot;
    }
    void grow() {
        std::vector<cObj const *> const objects = std::exchange(objects_, {});
        std::vector<std::uint32_t> const numbers = std::exchange(numbers_, {});
        --shift_;
        objects_.resize(size_t{1} << (64 - shift_));
        numbers_.resize(objects_.size());
        for (size_t i = 0; i < objects.size(); ++i)
            if (objects[i]) {
                size_t const slot = slot_of(objects[i]);
                objects_[slot] = objects[i];
                numbers_[slot] = numbers[i];
            }
    }

    // As many as a power of two, at most three quarters of them used: half of the memory and a
    // third of the time of a std::unordered_map.
    std::vector<cObj const *> objects_;
    std::vector<std::uint32_t> numbers_;
    int shift_ = 61; // from 64 bits to a slot
    size_t size_ = 0;
};

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
    void word(std::string_view text) {
        char size[24];
        char *const end = std::to_chars(size, size + sizeof size, text.size()).ptr;
        *end = ':';
        image_.append(size, static_cast<size_t>(end - size) + 1).append(text);
    }
    template <class T> void word_of_bytes(T const &value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        word({bytes, sizeof bytes});
    }

    // What is put here first is added last.
    void later(objref const &value) { todo_.push_back(value); }

    void add(objref const &value) {
        if (!value) return word("null");
        if (cAttrNode const *const constant = cat::find_const(value.get()))
            return word('#' + constant->key_as_string());
        auto const [number, fresh] = numbers_.add(value.get());
        if (!fresh) return word('@' + std::to_string(number));
        if (value->refs() == 1) kept_.push_back(value); // so that its address is not used again
        if (value->is_type()) return add_type(static_cast<cTypeObj &>(*value));
        word(value->type().name());
        if (!add_scalar(*value)) add_other(value);
    }

    bool add_scalar(cObj const &value) {
        cTypeObj const &type = value.type();
        if (&type == &cat::type_string())
            word(value_in<std::string>(value));
        else if (&type == &cat::type_bool())
            word_of_bytes(value_in<bool>(value));
        else if (&type == &cat::type_int())
            word_of_bytes(value_in<int>(value));
        else if (&type == &cat::type_float())
            word_of_bytes(value_in<float>(value));
        else if (&type == &cat::type_double())
            word_of_bytes(value_in<double>(value));
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
    cNumbers numbers_;
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
