// The walk that enters everything written so far. It uses its own list instead of recursion, since
// it can begin when nesting has nearly used up the stack, and needs no order: a value that occurs
// twice is in the table already, under the path of its first occurrence.

#include "text/write/cmet_once.h"

#include "containers/as_map.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_form.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

constinit cOpenContainer *cOpenContainer::innermost = nullptr;
constinit bool cOpenContainer::enter_all = false;

cOpenContainer::cOpenContainer(cAttrHash const &hash, cAbout const &about)
    : hash_(&hash), about_(about), outer_(innermost), keys_(text_state().path_keys()) {
    if (!outer_)
        enter_all = !about.composed || text_state().depth() >= 0;
    else if (!about.composed)
        enter_written_so_far();
    innermost = this;
    // It can occur again if it is shared, or in a shared hash.
    if (enters_all() || (outer_ && outer_->enters_all())) mark_open();
}

cOpenContainer::~cOpenContainer() {
    innermost = outer_;
    if (!outer_) enter_all = false;
    if (marked_) about_.tables->open.erase(about_.holder);
}

void cOpenContainer::mark_open() {
    if (!about_.tables || !about_.holder || about_.tables->open.has(about_.holder)) return;
    about_.tables->open.insert(about_.holder);
    marked_ = true;
}

namespace {

class cEntering {
  public:
    struct cLevel { // entries of a container
        cAttrHash const *hash;
        cPathTrie::node_id path;
        bool listed;
        cAttrNode const *end = nullptr; // the first node after the entries, or null
    };
    // The container is being written: its contents are not entered.
    void leave(cObj const &container) { seen_.insert(&container); }
    void enter(cLevel const &level); // and all levels below it

  private:
    void enter_level(cLevel const &level);
    bool enter_value(cObj const &value, cPathTrie::node_id path);
    void descend(cObj const &value, cPathTrie::node_id path);

    bool exact_ = exact_text();
    cTextState &state_ = text_state();
    std::vector<cLevel> below_;
    std::unordered_set<cObj const *> seen_; // containers: different keys can have one text
};

// False if it was entered under another path, from which the walk reaches it too.
bool cEntering::enter_value(cObj const &value, cPathTrie::node_id path) {
    bool const named = value.refs() != 1 && cat::find_const(&value);
    if (named && exact_) return false; // constants have their names
    return state_.enter_written(&value, path) && !named;
}

void cEntering::descend(cObj const &value, cPathTrie::node_id path) {
    cForm const form = form_of(value);
    if (!is_container(form) || !seen_.insert(&value).second) return;
    cMapObj const *const map = cat::as_map(&value);
    if (map) below_.push_back({&map->datamap(), path, form != cForm::map});
}

void cEntering::enter_level(cLevel const &level) {
    int place = 0;
    auto const *node = level.hash->first();
    for (; node && node != level.end; node = level.hash->next(node)) {
        // Exact text has omitted nothing so far: that would have run user code.
        if (!exact_ && !appears_in_plain(*node)) continue;
        bool const by_place = exact_ && level.listed;
        cPathTrie::node_id const path = state_.node_below(
            level.path, by_place ? std::to_string(place++) : cat::as_text(node->key()));
        if (enter_value(node->value(), path)) descend(node->value(), path);
    }
}

void cEntering::enter(cLevel const &level) {
    enter_level(level);
    while (!below_.empty()) {
        cLevel const next = below_.back();
        below_.pop_back();
        enter_level(next);
    }
}

} // namespace

void enter_written_so_far() {
    cOpenContainer *open = cOpenContainer::innermost;
    if (!open || std::exchange(cOpenContainer::enter_all, true)) return;
    cEntering entering;
    for (; open; open = open->outer_) {
        open->mark_open();
        if (!open->now_ || text_state().depth() < 0) continue; // the table was cleared already
        using cStage = cOpenContainer::cStage;
        if (open->stage_ == cStage::value) entering.leave(open->now_->value());
        auto const *const end =
            open->stage_ == cStage::key ? open->now_ : open->hash_->next(open->now_);
        if (end != open->hash_->first())
            entering.enter(
                {open->hash_, text_state().path_node(open->keys_), open->about_.listed, end});
    }
}
