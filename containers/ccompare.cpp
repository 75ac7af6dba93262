// The memo of a comparison. The frames of the pairs in progress are linked through the stack; the
// outermost one owns the memo. A frame enters its pair into the memo only when a comparison happens
// inside it, so comparing flat containers needs no heap memory.

#include "containers/ccompare.h"

#include "containers/as_map.h"
#include "core/cerr_object.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/core/ctypeobj.h"

#include <ostream>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

struct cPair {
    cat::cCompareKind kind;
    std::uint32_t a;
    std::uint32_t b;
    bool operator==(cPair const &) const = default;
    bool known() const noexcept { return a != 0 && b != 0; }
};

struct cPairHash {
    size_t operator()(cPair const &pair) const noexcept {
        std::uint64_t h = (std::uint64_t{pair.a} << 32) | pair.b;
        h = (h ^ static_cast<std::uint64_t>(pair.kind)) * 0x9E3779B97F4A7C15u;
        return static_cast<size_t>(h ^ (h >> 29));
    }
};

class cFrame;

struct cEntry {
    cFrame *in_progress; // null if the result is known
    bool equal;
};

struct cMemo {
    std::unordered_map<cPair, cEntry, cPairHash> entries;
    std::vector<cPair> equals; // in the order in which they were found equal
};

class cFrame {
  public:
    explicit cFrame(cPair const &pair);
    cFrame(cFrame const &) = delete;
    cFrame &operator=(cFrame const &) = delete;
    ~cFrame();

    // Is the result known without comparing? Then returns it in `equal`.
    bool answered(bool &equal);
    bool answer(bool equal);

  private:
    void enter();
    void drop_dependents();

    static constinit cFrame *innermost;

    cFrame *outer_;
    cMemo own_; // used only in the outermost frame
    cMemo *memo_;
    cPair pair_;
    size_t equals_before_;
    bool entered_ = false; // the pair is in the memo, in progress
    bool assumed_ = false; // an inner comparison assumed that it is equal
};

constinit cFrame *cFrame::innermost = nullptr;

cFrame::cFrame(cPair const &pair)
    : outer_(innermost), memo_(outer_ ? outer_->memo_ : &own_), pair_(pair),
      equals_before_(memo_->equals.size()) {
    if (outer_) outer_->enter();
    innermost = this;
}

cFrame::~cFrame() {
    innermost = outer_;
    if (!entered_) return;
    drop_dependents(); // an exception ended the comparison, so the result of this pair is unknown
    memo_->entries.erase(pair_);
}

void cFrame::enter() {
    if (entered_ || !pair_.known()) return;
    entered_ = memo_->entries.try_emplace(pair_, cEntry{this, true}).second;
}

bool cFrame::answered(bool &equal) {
    if (!outer_ || !pair_.known()) return false;
    auto const found = memo_->entries.find(pair_);
    if (found == memo_->entries.end()) return false;
    if (found->second.in_progress) found->second.in_progress->assumed_ = true;
    equal = found->second.equal;
    return true;
}

void cFrame::drop_dependents() {
    if (!assumed_) return;
    for (size_t i = equals_before_; i < memo_->equals.size(); ++i)
        memo_->entries.erase(memo_->equals[i]);
    memo_->equals.resize(equals_before_);
}

bool cFrame::answer(bool equal) {
    if (!outer_ || !pair_.known()) return equal; // the outermost frame destroys the memo
    if (!equal) drop_dependents();
    memo_->entries[pair_] = cEntry{nullptr, equal};
    entered_ = false;
    if (equal) memo_->equals.push_back(pair_);
    return equal;
}

} // namespace

bool cat::compared(cCompareKind kind, cMapObj const &a, cMapObj const &b,
                   compare_function compare) {
    if (stack_low()) return too_deep(a);
    cFrame frame({kind, a.obid(), b.obid()});
    if (bool equal = false; frame.answered(equal)) return equal;
    return frame.answer(compare(a, b));
}

cMapObj *cat::comparable(cMapObj const &a, objref const &b) noexcept {
    cMapObj *const map = as_map(b);
    return map && map->datamap().used() == a.datamap().used() ? map : nullptr;
}

bool cat::same_value(objref const &a, objref const &b) {
    if (a == b) return true;
    if (!a || !b) return false;
    objref const left = a; // holds both: user code may remove them
    objref const right = b;
    return left->equal(right);
}

bool cat::same_key(objref const &a, objref const &b) {
    if (!a || !b) return a == b;
    objref const left = a; // the hook may remove the nodes that hold the keys
    objref const right = b;
    return left->type().hasheq(left, right); // RUNS USER CODE
}

bool cat::too_deep(cObj const &obj) {
    begin_error(err_compared_too_deep) << cNamed::type(obj.type().name());
    raise_eros();
    return false;
}
