// Copies, assigns, merges and compares random values, of the library's types and of the program's.

#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cerr.h"
#include "tests/reference/transcript.h"
#include "tests/reference/trees.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace reference {

namespace {

class cCopying {
  public:
    cCopying() : trees_(world().input) {
        for (unsigned n = 2 + world().input.below(2); n; --n) {
            values_.push_back(trees_.tree());
            if (world().input.one_in(2)) trees_.forget();
        }
        trees_.forget();
        world().calm = world().input.one_in(3);
    }

    void run() {
        for (unsigned n = 1 + world().input.below(8); n; --n) {
            objref &target = world().input.pick(values_);
            objref const source = world().input.pick(values_);
            size_t const before = transcript().size();
            unordered_ = false;
            try {
                operate(target, source);
            } catch (cErr const &error) {
                say("thrown " + shown(error.as_string()));
            }
            if (unordered_) sort_ends(before);
            say("objects " + std::to_string(static_cast<int>(cObjBase::ob_count() - census_)));
            if (world().input.one_in(3)) walk();
        }
        walk();
        while (!values_.empty()) {
            say("end");
            values_.erase(values_.begin() + world().input.below(values_.size()));
        }
        say("objects " + std::to_string(static_cast<int>(cObjBase::ob_count() - census_)));
    }

  private:
    void walk() {
        cWalk walk;
        for (objref const &value : values_) walk.value("value", value);
        walk.ranks();
    }

    // Detaching destroys objects in the order of their addresses, which differs between runs.
    static void sort_ends(size_t from) {
        std::string &text = transcript();
        std::istringstream lines(text.substr(from));
        text.resize(from);
        std::vector<std::string> ends;
        auto const put_ends = [&] {
            std::sort(ends.begin(), ends.end());
            for (std::string const &end : ends) say(end);
            ends.clear();
        };
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("end of ")) {
                ends.push_back(line);
                continue;
            }
            put_ends();
            say(line);
        }
        put_ends();
    }

    static void result(std::string const &what, bool good) {
        say(what + (good ? " true" : " false"));
    }

    void operate(objref &target, objref const &source) {
        cRandom &random = world().input;
        auto *const map = dynamic_cast<cMapObj *>(target.get());
        if (!target || !source) return;
        switch (random.below(22)) {
        case 0:
        case 1:
        case 2: {
            say("clone " + label(source));
            objref const copy = source->clone();
            say("  is " + label(copy));
            if (cObj::is_good(copy)) values_.push_back(copy);
            return;
        }
        case 3:
        case 4:
            say("assign " + label(target) + " " + label(source));
            return result("  assigned", target->assign(source));
        case 5:
        case 6: {
            bool const deep = random.one_in(2);
            say(std::string("detach ") + (deep ? "deep " : "") + label(target));
            unordered_ = true;
            return result("  detached", cat::detach(target, deep));
        }
        case 7:
            if (!map) return;
            say("map detach " + label(target));
            unordered_ = true;
            return result("  detached", map->detach(random.one_in(2)));
        case 8:
        case 9:
        case 10: {
            static constexpr std::array commands{"-xx", "-xx", "0xx", "0ss", "0as", "-s-",
                                                 "00x", "0-s", "?x?", "axs", "-as", "-ax",
                                                 "0--", "-0-", "--s", "",    "-x",  "000"};
            char const *const command = random.pick(commands);
            say(std::string("attrcopy ") + command + " " + label(target) + " " + label(source));
            return result("  copied", target->attrcopy(*source, command));
        }
        case 11:
            say("add " + label(target) + " " + label(source));
            return result("  added", target->add(source));
        case 12:
        case 13:
            say("equal " + label(target) + " " + label(source));
            return result("  equal", target->equal(source));
        case 14:
            say("less " + label(target) + " " + label(source));
            return result("  less", target->less(*source));
        case 15:
            if (!map) return;
            say("equal in any order");
            return result("  equal", map->equal_unsorted(*source));
        case 16: {
            say("slice of " + label(source));
            objref const slice = source->getslice(static_cast<int>(random.below(4)) - 1,
                                                  static_cast<int>(random.below(5)), nullptr);
            values_.push_back(slice);
            return;
        }
        case 17:
            return result("owner", target->is_owner_of(*source));
        case 18:
            if (!map) return;
            say("remove_emptychilds");
            return map->remove_emptychilds(random.one_in(2));
        case 19: {
            say("copyitem " + label(target));
            objref const key = trees_.key();
            return result("  copied", target->copyitem(key, source, random.one_in(2)));
        }
        case 20:
            say("convert " + label(target) + " " + label(source));
            return result("  converted", target->convert(source));
        default: {
            if (!map) return;
            say("copy constructed");
            values_.push_back(make<cMapObj>(static_cast<cMapObj const &>(*map)));
            return;
        }
        }
    }

    std::uint32_t const census_ = cObjBase::ob_count();
    cTrees trees_;
    std::vector<objref> values_;
    bool unordered_ = false;
};

} // namespace

void copy_mode() {
    std::optional<cReplaced> replaced;
    if (world().input.one_in(5)) replaced.emplace(1 + world().input.below(3));
    world().calm = true;
    cCopying().run();
}

} // namespace reference
