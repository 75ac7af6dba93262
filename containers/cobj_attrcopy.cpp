// attrcopy: copies the entries of one container into another. The assign of maps and vectors calls
// it. A command has three letters, one for each class of keys:
//
//   keys in            letters
//   the target only    0 remove
//   both               a assign in place   s store   x merge   0 remove
//   the source only    s store   x store, or append in a vector or set
//
// With any other letter, or none, the keys of the class stay as they are. A '?' is replaced by the
// letter of the target's member "cpcommands"; if there is a '?', so are letters missing at the end.
//
// The keys are listed before anything changes. In vectors and sets, keys are removed at the end
// and backwards, since a removal moves the values after it.
//
// Parts may be shared or contain themselves. So the outermost call remembers the pairs of
// containers that were copied, and each pair is copied only once; but values are appended each
// time. Only calls in this file pass this memo on; calls by user code begin a new one.

#include "containers/ccompare.h"
#include "containers/cmergebudget.h"
#include "containers/cplain_copy.h"
#include "containers/cringwalk.h"
#include "core/cscalar.h"
#include "core/ctext_hooks.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"

#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace {

enum cKeyClass : unsigned char { target_only, both, source_only };

constexpr char none = '?'; // a letter that has no meaning in any class
using cLetters = std::array<char, 3>;

// Results of copies, by target, source and letters; true while the copy is in progress.
using cCopied = std::map<std::tuple<std::uint32_t, std::uint32_t, cLetters>, bool>;

// The memo for the attrcopy that starts next, which takes it and sets this to null.
constinit cCopied *handed_down = nullptr;

class cHandDown {
  public:
    explicit cHandDown(cCopied &copied) noexcept { handed_down = &copied; }
    cHandDown(cHandDown const &) = delete;
    cHandDown &operator=(cHandDown const &) = delete;
    ~cHandDown() { handed_down = nullptr; }
};

cLetters complete(cObj const &target, char const *commands) {
    std::string const given = std::string(commands ? commands : "").substr(0, 3);
    cLetters letters{none, none, none};
    if (given.find('?') != std::string::npos) {
        objref const own = target.gmember("cpcommands");
        std::string const text = cat::is_string(own) ? text_hooks.as_string(own) : std::string();
        for (size_t i = 0; i < letters.size() && i < text.size(); ++i) letters[i] = text[i];
    }
    for (size_t i = 0; i < letters.size() && i < given.size(); ++i)
        if (given[i] != '?') letters[i] = given[i];
    return letters;
}

bool is_sequence(cObj const *obj) noexcept { return cObj::is_vector(obj) || cObj::is_set(obj); }

// The hash that an object's iterator walks; null if the object has no iterator of the library.
hashref hash_of(objref const &iterobj) {
    auto const *const it = dynamic_cast<cIterObj const *>(iterobj.get());
    return it ? it->hash_ref() : hashref();
}

// Keys by the serial number of their node, since a key's hook may remove nodes meanwhile.
using cKeys = std::map<std::uint32_t, objref>;

// The keys in the order of the ring of their hash.
std::vector<objref> in_ring_order(cAttrHash const &hash, cKeys const &keys) {
    std::vector<objref> ordered;
    ordered.reserve(keys.size());
    if (hash.in_creation_order()) {
        for (auto const &[anid, key] : keys) ordered.push_back(key);
        return ordered;
    }
    for (cAttrNode *node = hash.first(); node && ordered.size() < keys.size();
         node = hash.next(node))
        if (keys.contains(node->anid())) ordered.push_back(node->key());
    return ordered;
}

class cAttrCopy {
  public:
    cAttrCopy(cObj &target, objref const &source, cLetters const &letters, cCopied &copied)
        : target_(target), source_(source), letters_(letters), copied_(copied),
          seq_(is_sequence(&target)) {}
    cAttrCopy(cAttrCopy const &) = delete;
    cAttrCopy &operator=(cAttrCopy const &) = delete;
    ~cAttrCopy() = default;

    bool run(cAttrHash const &source) {
        // Skips the whole copy, before any walk, if the budget is too small for it.
        cat::cMergeBudget *const budget = cat::cMergeBudget::current();
        if (budget && !budget->affords(source.used())) return false;
        if (letters_[source_only] == (seq_ ? 'x' : 's') && cat::copy_plainly(target_, *source_))
            return true;
        classify(hash_of(target_.iterobj()).get(), source);
        bool result = true;
        for (cItem const &item : items_) {
            result &= copy(item);
            if (cat::merge_exhausted()) return false;
        }
        return remove_backwards() && result;
    }

  private:
    struct cItem {
        objref key;
        cKeyClass key_class;
    };

    void classify(cAttrHash const *target, cAttrHash const &source);
    void list_target(cAttrHash const &target, cAttrHash const &source);
    void list_common(cAttrHash const &target, cAttrHash const &source);
    bool copy(cItem const &item);
    bool copy_both(objref const &key, char letter);
    bool merge(objref const &key);
    bool store(objref const &key);
    bool assign(cObj *target, objref const &source);
    void append(objref const &value);
    bool remove_backwards();
    char letter(cItem const &item) const { return letters_[item.key_class]; }
    bool remove(objref const &key) { return target_.setattr(key, nullptr); }

    cObj &target_;
    objref source_;
    cLetters letters_;
    cCopied &copied_;
    bool seq_;
    std::vector<cItem> items_;
};

void cAttrCopy::classify(cAttrHash const *target, cAttrHash const &source) {
    if (target && letters_[target_only] == '0')
        list_target(*target, source);
    else if (target && std::string_view("axs0").find(letters_[both]) != std::string_view::npos)
        list_common(*target, source);
    char const last = letters_[source_only];
    if (last != 's' && last != 'x') return;
    for (cRingWalk walk(source); walk.valid(); walk.step()) {
        objref const key = walk.key();
        if (!target || !target->find(key)) items_.push_back({key, source_only});
    }
}

void cAttrCopy::list_target(cAttrHash const &target, cAttrHash const &source) {
    for (cRingWalk walk(target); walk.valid(); walk.step()) {
        objref const key = walk.key();
        items_.push_back({key, source.find(key) ? both : target_only});
    }
}

// Keys that only the target has need no step here, so merging a small source into a large target
// costs time in proportion to the source. (If nodes of the target were moved, finding their order
// may need a walk.)
void cAttrCopy::list_common(cAttrHash const &target, cAttrHash const &source) {
    cKeys keys;
    for (cRingWalk walk(source); walk.valid(); walk.step())
        if (cAttrNode const *const found = target.find(walk.key()))
            keys.emplace(found->anid(), found->key());
    for (objref const &key : in_ring_order(target, keys)) items_.push_back({key, both});
}

bool cAttrCopy::copy(cItem const &item) {
    char const c = letter(item);
    switch (item.key_class) {
    case target_only:
        return c != '0' || seq_ || remove(item.key);
    case both:
        return copy_both(item.key, c);
    case source_only:
        if (c != 's' && c != 'x') return true;
        if (c == 's' || !seq_) return store(item.key);
        append(source_->getattr(item.key));
        return true;
    }
    return true;
}

bool cAttrCopy::copy_both(objref const &key, char c) {
    switch (c) {
    case 'x':
        return merge(key);
    case 'a':
        return assign(target_.getattr(key), source_->getattr(key));
    case 's':
        return store(key);
    case '0':
        return seq_ || remove(key);
    default:
        return true;
    }
}

bool cAttrCopy::store(objref const &key) {
    objref const value = source_->getattr(key);
    return cat::merge_allows(target_, key, value) && target_.setattr(key, value);
}

// Appends to the target; ignores the result of append.
void cAttrCopy::append(objref const &value) {
    if (cat::merge_allows(target_, nullptr, value)) target_.append(value);
}

// The letter 'x' for a key that both have.
bool cAttrCopy::merge(objref const &key) {
    objref const value = source_->getattr(key);
    if (seq_) {
        append(value);
        return true;
    }
    objref const present = target_.getattr(key);
    bool const into_map = cObj::is_map(present);
    if (!into_map && !is_sequence(present)) return assign(present, value);
    if (into_map || is_sequence(value)) {
        if (!cat::merge_charge()) return false;
        cHandDown const down(copied_);
        return value && present->attrcopy(*value, "-xx");
    }
    if (cat::merge_allows(*present, nullptr, value)) present->append(value);
    return true;
}

// Does assign call attrcopy directly, without running user code in between?
bool assigns_by_attrcopy(cObj const &obj) {
    if (obj.flags_of(of_exe_member | of_const)) return false;
    cVoidFunction const assign = obj.type().method(mid_assign);
    return assign == reinterpret_cast<cVoidFunction>(&cTomMap::m_assign) ||
           assign == reinterpret_cast<cVoidFunction>(&cTomVector::m_assign);
}

bool cAttrCopy::assign(cObj *target, objref const &source) {
    if (cObj::is_void(target) || !cat::merge_charge()) return false;
    objref const held = objref::share(target);
    if (cObj::is_void(source) || !assigns_by_attrcopy(*held)) return held->assign(source);
    cHandDown const down(copied_);
    return held->assign(source);
}

// Removes backwards, so that the indices of the remaining pairs stay valid.
bool cAttrCopy::remove_backwards() {
    bool result = true;
    if (!seq_) return result;
    for (auto item = items_.rbegin(); item != items_.rend(); ++item)
        if (item->key_class != source_only && letter(*item) == '0') result &= remove(item->key);
    return result;
}

// The entry of one pair in the memo. A pair that appends has none, since it must not be skipped.
class cRememberedPair {
  public:
    cRememberedPair(cCopied &copied, cObj const &target, cObj const &source,
                    cLetters const &letters)
        : copied_(copied), key_(target.obid(), source.obid(), letters) {
        bool const appends = is_sequence(&target) && letters[both] == 'x';
        usable_ = target.obid() != 0 && source.obid() != 0 && !appends;
    }
    cRememberedPair(cRememberedPair const &) = delete;
    cRememberedPair &operator=(cRememberedPair const &) = delete;
    ~cRememberedPair() = default;

    // True, with the result, if the pair was met before. Otherwise marks it as in progress.
    bool met(bool &result) {
        if (!usable_) return false;
        auto const [place, is_new] = copied_.try_emplace(key_, true);
        result = place->second;
        return !is_new;
    }
    bool done(bool result) {
        if (usable_) copied_[key_] = result;
        return result;
    }

  private:
    cCopied &copied_;
    cCopied::key_type key_;
    bool usable_;
};

} // namespace

bool cObj::attrcopy(cObj const &source, char const *commands) {
    cCopied own;
    cCopied *const given = std::exchange(handed_down, nullptr);
    cCopied &copied = given ? *given : own;
    if (cat::stack_low()) return cat::too_deep(*this);
    objref const self = objref::share(this);
    objref const held = objref::share(const_cast<cObj *>(&source));
    objref const iterobj = held->iterobj();
    hashref const hash = hash_of(iterobj);
    if (is_void(iterobj) || !hash) return false;
    cLetters const letters = complete(*this, commands);
    cRememberedPair pair(copied, *this, source, letters);
    if (bool result = false; pair.met(result)) return result;
    return pair.done(cAttrCopy(*this, held, letters, copied).run(*hash));
}

cObj &cObj::operator<<(cObj const &source) {
    attrcopy(source, "-xx");
    return *this;
}
