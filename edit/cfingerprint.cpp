#include "qrv/edit/cfingerprint.h"

// A fingerprint is a hash of numbers. An object adds one number for its kind and then its content;
// an object that was met before adds its number among the objects. The remaining work is on an
// explicit stack, since references create values that are deeper than the nesting of any text.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace qrv::edit {

namespace {

template <class T> T const &data_of(cObj const &value) {
    return static_cast<cObjDR<T> const &>(value).val();
}

// A hash table from the addresses of objects to numbers, for trees with very many objects.
class cNumbers {
  public:
    struct cFound {
        size_t number;
        bool fresh;
    };
    // Returns the number of the object; assigns `number` to it if it has none.
    cFound add(cObj const *object, size_t number) {
        if (4 * size_ >= 3 * objects_.size()) grow();
        size_t const slot = slot_of(object);
        bool const fresh = !objects_[slot];
        if (fresh) {
            objects_[slot] = object;
            numbers_[slot] = static_cast<std::uint32_t>(number);
            ++size_;
        }
        return {numbers_[slot], fresh};
    }

  private:
    // The slot of the object, or the free slot in which it belongs.
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

    // The size is a power of two, at most three quarters of the slots are used. Takes half of the
    // memory and a third of the time of a std::unordered_map.
    std::vector<cObj const *> objects_;
    std::vector<std::uint32_t> numbers_;
    int shift_ = 61; // reduces 64 bits to a slot number
    size_t size_ = 0;
};

// Two hashes of 64 bits, so that different values do not collide by chance.
class cDigest {
  public:
    void add(std::uint64_t number) {
        a_ = (a_ + number) * 0x9E3779B97F4A7C15u;
        a_ ^= a_ >> 29;
        b_ = (std::rotl(b_, 27) ^ number) * 0xD6E8FEB86659FD93u;
        b_ ^= b_ >> 32;
    }
    void add(std::string_view text) {
        add(text.size());
        for (; text.size() >= sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t)))
            add(bits_of(text, sizeof(std::uint64_t)));
        if (!text.empty()) add(bits_of(text, text.size()));
    }
    std::string text() const { return std::to_string(a_) + '/' + std::to_string(b_); }

  private:
    static std::uint64_t bits_of(std::string_view text, size_t size) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, text.data(), size);
        return bits;
    }

    std::uint64_t a_ = 1, b_ = 2;
};

enum class cKind : unsigned char {
    null,
    constant,
    again,
    type,
    string,
    truth,
    integer,
    single,
    precise,
    other
};

class cFingerprinter {
  public:
    std::string of(objref const &value) {
        later(value);
        while (!todo_.empty()) {
            cNext const next = todo_.back();
            todo_.pop_back();
            next.entry ? add_entry(*next.entry) : add(next.object);
        }
        return digest_.text() + ':' + std::to_string(objects_);
    }

  private:
    // An object, or an entry with its key.
    struct cNext {
        cObj const *object;
        cAttrNode const *entry;
    };

    // A stack: the first value is added last. The value must live until the fingerprint is
    // complete.
    void later(objref const &value) { todo_.push_back({value.get(), nullptr}); }
    void later_made(objref const &value) {
        kept_.push_back(value);
        later(value);
    }

    void add(cKind kind) { digest_.add(static_cast<std::uint64_t>(kind)); }

    void add(cObj const *object) {
        if (!object) return add(cKind::null);
        // Constants and objects that can be met again have more than one reference.
        if (object->refs() > 1 && is_known(*object)) return;
        objects_ += object->refs() > 1 ? 0 : 1;
        if (add_scalar(*object)) return;
        if (object->is_type()) return add_type(static_cast<cTypeObj const &>(*object));
        add_other(*object);
    }

    // Adds a constant, or an object that was met before; false for other objects.
    bool is_known(cObj const &object) {
        if (cAttrNode const *const constant = cat::find_const(&object)) {
            add(cKind::constant);
            digest_.add(constant->key_as_string());
            return true;
        }
        auto const [number, fresh] = numbers_.add(&object, objects_);
        if (fresh) {
            ++objects_;
            return false;
        }
        add(cKind::again);
        digest_.add(number);
        return true;
    }

    template <class T> bool add_bits(cKind kind, T value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof value);
        add(kind);
        digest_.add(bits);
        return true;
    }

    bool add_string(std::string_view text) {
        add(cKind::string);
        digest_.add(text);
        return true;
    }

    bool add_scalar(cObj const &value) {
        cTypeObj const &type = value.type();
        if (&type == &cat::type_string()) return add_string(data_of<std::string>(value));
        if (&type == &cat::type_int()) return add_bits(cKind::integer, data_of<int>(value));
        if (&type == &cat::type_double()) return add_bits(cKind::precise, data_of<double>(value));
        if (&type == &cat::type_bool()) return add_bits(cKind::truth, data_of<bool>(value));
        if (&type == &cat::type_float()) return add_bits(cKind::single, data_of<float>(value));
        return false;
    }

    void add_other(cObj const &value) {
        add(cKind::other);
        digest_.add(value.type().name());
        if (auto const *const spec = dynamic_cast<cAttspec const *>(&value))
            return add_specification(*spec);
        if (auto const *const map = dynamic_cast<cMapObj const *>(&value))
            return add_entries(map->datamap(), !value.is_vector() && !value.is_set());
        if (auto const *const cursor = dynamic_cast<cIterObj const *>(&value))
            return later_made(cursor->key());
        digest_.add(cat::as_text(objref::share(const_cast<cObj *>(&value)))); // RUNS USER CODE
    }

    // Adds the declaration of a type: a map of specifications, or choices.
    void add_type(cTypeObj const &type) {
        add(cKind::type);
        digest_.add(type.type().name());
        digest_.add(type.name());
        for (char const *const member : {"attspec", "choices"})
            if (objref const declared = type.tmember(member); cObj::is_good(declared))
                later_made(declared);
    }

    void add_specification(cAttspec const &spec) {
        digest_.add(static_cast<std::uint64_t>(spec.flags_of(asf_all)));
        digest_.add(spec.get_type() ? spec.get_type()->name() : "");
        later_made(spec.get_default());
    }

    void add_entries(cAttrHash const &hash, bool keyed) {
        digest_.add(std::uint64_t{hash.used()});
        for (cAttrNode const *node = hash.last(); node; node = hash.prev(node)) {
            if (keyed)
                todo_.push_back({nullptr, node});
            else
                later(node->valref());
        }
    }

    // Adds the key, then the value. A key without an object cannot be shared, and adds what an
    // unshared key object would add.
    void add_entry(cAttrNode const &entry) {
        later(entry.valref());
        if (entry.has_key_object()) return later(entry.key());
        ++objects_;
        if (auto const text = entry.key_string())
            add_string(*text);
        else
            add_bits(cKind::integer, *entry.key_int());
    }

    cat::ExactText const exact_;
    cDigest digest_;
    std::vector<cNext> todo_;
    std::vector<objref> kept_; // temporary objects, held so that no address is used again
    cNumbers numbers_;         // of objects with more than one reference
    size_t objects_ = 0;
};

} // namespace

std::string fingerprint(objref const &value) { return cFingerprinter().of(value); }

} // namespace qrv::edit
