// Random operations on attribute hashes, with keys of the library and keys of the program whose
// hooks log and change the hashes, and with values that look at the hash when they are destroyed.

#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cerr.h"
#include "tests/reference/transcript.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <array>
#include <limits>
#include <optional>
#include <vector>

namespace reference {

namespace {

// The keys that a seed uses. Some make a table grow, some keep a map small.
enum class cKeys { few, words, places, numbers, colliding, user, all };

class cKeyMaker {
  public:
    cKeyMaker() : kind_(static_cast<cKeys>(world().input.below(7))) {}

    objref key() {
        cRandom &random = world().input;
        cKeys const kind = random.one_in(12) ? cKeys::all : kind_;
        switch (kind) {
        case cKeys::few:
            return random.one_in(3) ? cat::of(static_cast<int>(random.below(5))) : word(6);
        case cKeys::words:
            return word(300);
        case cKeys::places:
            return cat::of(static_cast<int>(random.below(random.one_in(3) ? 200 : 12)));
        case cKeys::numbers:
            return number();
        case cKeys::colliding:
            return cat::of(static_cast<int>(random.below(90)) * 97 * 197);
        case cKeys::user:
            return user();
        default:
            return any();
        }
    }

  private:
    static objref word(unsigned count) {
        unsigned const n = world().input.below(count);
        static constexpr std::array words{"a", "b", "c", "x", "", "k l"};
        return n < words.size() ? cat::of(words[n]) : cat::of("w" + std::to_string(n));
    }
    static objref number() {
        static constexpr std::array doubles{0.0,
                                            -0.0,
                                            1.0,
                                            2.5,
                                            -7.0,
                                            1e300,
                                            std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::infinity()};
        static constexpr std::array ints{0, 1, -1, 2147483647, -2147483647 - 1, 97, 5};
        cRandom &random = world().input;
        double const d = random.pick(doubles);
        if (random.one_in(3)) return cat::of(d);
        if (random.one_in(2)) return cat::of(static_cast<float>(d > 1e200 ? 3.5 : d));
        return cat::of(random.pick(ints));
    }
    static objref user() {
        static constexpr std::array types{"Key", "Key", "Key", "NumKey", "Text", "Num", "Box"};
        static constexpr std::array texts{"a", "b", "c", "d", "aa", "ab", ""};
        return new_user_value(world().input.pick(types), world().input.pick(texts));
    }
    static objref any() {
        switch (world().input.below(8)) {
        case 0:
            return nullptr;
        case 1:
            return cat::nil();
        case 2:
            return cat::of(true);
        case 3:
            return number();
        case 4:
            return user();
        case 5:
            return make_key(static_key());
        default:
            return word(20);
        }
    }
    static std::string const &static_key() {
        static std::string const key = "kept";
        return key;
    }

    cKeys kind_;
};

bool user_executable(cObj &obj, objref &) {
    say("called " + label(&obj));
    return true;
}

objref some_value() {
    cRandom &random = world().input;
    static constexpr std::array types{"Box", "Key", "Bag", "Conv"};
    switch (random.below(12)) {
    case 0:
        return random.one_in(2) ? cat::badfind() : objref();
    case 1:
        return random.one_in(2) ? cat::bad() : cat::nil();
    case 2:
        if (random.one_in(3)) return make<cExeMember>(cProcedure2(user_executable));
        return make<cMapObj>();
    case 3:
    case 4:
    case 5:
        return new_user_value(random.pick(types), "v" + std::to_string(random.below(5)));
    case 6:
        return cat::of("text");
    default:
        return cat::of(static_cast<int>(random.below(9)));
    }
}

std::string node_label(cAttrNode const *node) {
    return node ? label(node->key()) + "=" + label(node->valref()) : "none";
}

std::string ring(cAttrHash const &hash) {
    std::string text;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        text += " " + node_label(node);
    return text;
}

// Keeps the memory of a node allocated while user code may remove the node.
class cHeld {
  public:
    explicit cHeld(cAttrNode *node) : node_(node) {
        if (node_) node_->hold();
    }
    cHeld(cHeld const &) = delete;
    cHeld &operator=(cHeld const &) = delete;
    ~cHeld() {
        if (node_) node_->unhold();
    }

  private:
    cAttrNode *node_;
};

class cHashing {
  public:
    cHashing() {
        for (unsigned n = 1 + world().input.below(2); n; --n)
            maps_.push_back(make<cBag>(&user_type("Bag")));
    }

    void run() {
        for (unsigned n = 5 + world().input.below(world().input.one_in(5) ? 400 : 40); n; --n)
            step();
        cWalk walk;
        for (cRef<cBag> const &map : maps_) walk.hash("hash", map->datamap());
        walk.ranks();
        end();
    }

  private:
    cAttrHash &hash() { return world().input.pick(maps_)->datamap(); }

    void step() {
        cAttrHash &h = hash();
        objref const keep = objref::share(h.father());
        if (world().input.one_in(8)) world().watched = &h;
        try {
            operate(h);
        } catch (cErr const &error) {
            say("thrown " + shown(error.as_string()));
        }
        world().watched = nullptr;
        say("  used " + std::to_string(h.used()) + " slots " + std::to_string(h.slots()) +
            " vector " + std::to_string(h.is_vector()) + " after " +
            std::to_string(h.after_last_index()) + " created " +
            std::to_string(h.in_creation_order()) + " first " + node_label(h.first()) + " last " +
            node_label(h.last()));
        if (world().input.one_in(20)) say("  ring" + ring(h));
        std::string const broken = h.broken_rule(false);
        if (!broken.empty()) say("BROKEN " + broken.substr(0, 2));
    }

    void operate(cAttrHash &h) {
        unsigned const what = world().input.below(40);
        if (what < 16)
            insert(h, what);
        else if (what < 24)
            look(h, what);
        else if (what < 30)
            remove(h, what);
        else
            rearrange(h, what);
    }

    void insert(cAttrHash &h, unsigned what) {
        objref const key = keys_.key();
        objref const value = some_value();
        std::string const with = label(key) + " " + label(value);
        switch (what) {
        case 0:
            say("setitem " + with);
            return say("  " + std::to_string(h.setitem(key, value)));
        case 1:
            say("copyitem " + with);
            return say("  " + std::to_string(h.copyitem(key, value, world().input.one_in(2))));
        case 2: {
            say("insert " + with);
            cAttrNode *const before = h.findpos(world().input.below(h.used() + 2));
            cHeld const held(before);
            return say("  " + node_label(h.insert(key, value, before)));
        }
        case 3:
            say("append " + label(value));
            return say("  " + std::to_string(h.vect_append(value)));
        case 4: {
            int const place = static_cast<int>(world().input.below(h.used() + 2)) - 1;
            say("insert at " + std::to_string(place) + " " + label(value));
            return say("  " + std::to_string(h.vect_insert(place, value)));
        }
        case 5: {
            unsigned const count = world().input.below(120);
            say("many " + std::to_string(count));
            for (unsigned i = 0; i < count; ++i)
                say("  " + std::to_string(h.mapitem(keys_.key(), cat::of(static_cast<int>(i)))) +
                    " " + std::to_string(h.slots()));
            return;
        }
        case 6: {
            say("through a node " + with);
            cAttrNode *const node = h.findpos(world().input.below(h.used() + 1));
            if (!node) return;
            cHeld const held(node);
            cAttrNode const &result = *node = value;
            return say("  " + node_label(&result));
        }
        case 7:
            say("setattr " + with);
            return say("  " + std::to_string(h.father()->setattr(key, value)));
        default:
            say("mapitem " + with);
            return say("  " + std::to_string(h.mapitem(key, value)));
        }
    }

    void look(cAttrHash &h, unsigned what) {
        objref const key = keys_.key();
        switch (what) {
        case 16:
            say("find " + label(key));
            return say("  " + node_label(h.find(key)));
        case 17: {
            unsigned const place = world().input.below(h.used() + 2);
            say("findpos " + std::to_string(place));
            return say("  " + node_label(h.findpos(place)));
        }
        case 18:
            say("posofkey " + label(key));
            return say("  " + std::to_string(h.posofkey(key)));
        case 19:
            say("findvalue");
            return say("  " + node_label(h.findvalue(some_value())));
        case 20:
            return say("texts " + label(h.getitem("a")) + " " + node_label(h.find(3)) + " " +
                       node_label(h.find(std::string("b"))) + " " +
                       std::to_string(h.posofkey("x")));
        case 21: {
            int const place = static_cast<int>(world().input.below(9));
            return say("child " + label(*h.father() / place));
        }
        case 22:
            return step_cursor(h);
        default:
            say("getitem " + label(key));
            return say("  " + label(h.getitem(key)));
        }
    }

    void remove(cAttrHash &h, unsigned what) {
        objref const key = keys_.key();
        switch (what) {
        case 24:
            say("erase " + label(key));
            return say("  " + node_label(h.erase(key)));
        case 25: {
            int const place = static_cast<int>(world().input.below(h.used() + 2)) - 1;
            say("erase at " + std::to_string(place));
            return say("  " + std::to_string(h.vect_erase(place)));
        }
        case 26: // an existing one
            if (cAttrNode const *const node = h.findpos(world().input.below(h.used() + 1))) {
                objref const present = node->key();
                say("delitem " + label(present));
                say("  " + std::to_string(h.delitem(present)));
            }
            return;
        case 27:
            if (!world().input.one_in(4)) return;
            say("clear");
            return h.clear();
        default:
            say("delitem " + label(key));
            return say("  " + std::to_string(h.delitem(key)));
        }
    }

    void rearrange(cAttrHash &h, unsigned what) {
        objref const key = keys_.key(), other = keys_.key();
        switch (what) {
        case 30:
        case 31:
            say("rename " + label(key) + " " + label(other));
            return h.rename(key, other);
        case 32:
            say("set_vector");
            return h.set_vector();
        case 33: {
            say("copy of the hash");
            cAttrHash &from = hash();
            h = from;
            return;
        }
        case 34:
            say("detach " + label(key));
            return say("  " + std::to_string(h.detach(key)));
        case 35:
            if (!world().input.one_in(3)) return;
            say("detach all");
            return say("  " + std::to_string(h.detach()));
        case 36:
            say("flags");
            return h.flags(static_cast<int>(world().input.below(4)));
        case 37:
            return sort(h);
        case 38: {
            say("a hash of its own");
            hashref fresh = make<cAttrHash>(nullptr);
            for (unsigned n = world().input.below(30); n; --n)
                fresh->mapitem(keys_.key(), some_value());
            say("  slots " + std::to_string(fresh->slots()) + ring(*fresh));
            if (world().input.one_in(2)) world().watched = fresh;
            fresh = nullptr;
            world().watched = nullptr;
            return;
        }
        default:
            if (world().input.one_in(3)) cursor_ = maps_[0]->begin();
            return step_cursor(h);
        }
    }

    void sort(cAttrHash &h) {
        std::vector<cAttrNode *> nodes = cat::nodes_of(h);
        world().calm = true;
        switch (world().input.below(4)) {
        case 0:
            cat::sort_nodes(nodes, keyord);
            break;
        case 1:
            cat::sort_nodes(nodes, valord);
            break;
        case 2:
            cat::sort_nodes(nodes, obidord);
            break;
        default:
            cat::sort_nodes(nodes, anidord);
            break;
        }
        world().calm = calm_;
        std::string text = "sorted";
        for (cAttrNode const *node : nodes) text += " " + label(node->key());
        say(text);
    }

    void step_cursor(cAttrHash &h) {
        if (!cursor_ || world().input.one_in(10)) cursor_.emplace(hashref::share(&h));
        cIterObj &it = *cursor_;
        switch (world().input.below(5)) {
        case 0:
            say("setpos " +
                std::to_string(it.setpos(static_cast<int>(world().input.below(6)) - 2)));
            break;
        case 1:
            say("setkey " + std::to_string(it.setkey(keys_.key())));
            break;
        case 2:
            say("update " + std::to_string(it.update()));
            break;
        case 3:
            if (it.valid()) ++it;
            break;
        default:
            if (it.valid()) --it;
            break;
        }
        say("cursor " + std::to_string(it.pos()) + " " + std::to_string(it.valid()) + " " +
            label(it.key()) + " " + label(it.valref()) + " of " + std::to_string(it.size()));
    }

    void end() {
        say("end");
        while (!maps_.empty()) {
            if (world().input.one_in(2)) world().watched = &maps_.back()->datamap();
            maps_.pop_back();
            world().watched = nullptr;
        }
        cursor_.reset();
    }

    bool const calm_ = world().calm = world().input.one_in(3);
    cKeyMaker keys_;
    std::vector<cRef<cBag>> maps_;
    std::optional<cIterObj> cursor_;
};

} // namespace

void hash_mode() {
    std::optional<cReplaced> replaced;
    if (world().input.one_in(12)) replaced.emplace(1 + world().input.below(3));
    cHashing().run();
}

} // namespace reference
