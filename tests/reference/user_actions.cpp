// What user code does besides logging: it reads and writes other values, changes a container,
// raises an error, throws.

#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "tests/reference/transcript.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <array>
#include <sstream>

namespace reference {

namespace {
constexpr size_t max_written = 20000;

void read_another() {
    static constexpr std::array texts{"{p=#cRef(/a);q=[1,2]}",
                                      "[#cRef(/a/b), <1,1>]",
                                      "7 ",
                                      "{x={y=1};y=#cRef(/x/y);z=#cRef(/b);}",
                                      "Box(inner)",
                                      "#cRef(/b)",
                                      "[1 2",
                                      "{ {k=1} k=2; a=#cRef(/k) }",
                                      "#cRef(a/x)",
                                      "{Key(1)=2}",
                                      "",
                                      "int(5)"};
    std::string const text = world().user.pick(texts);
    objref result;
    int delim = -99;
    int const code = cObj::readobj(text.c_str(), result, &delim);
    say("  reads " + text + ": " + std::to_string(code) + " delim " + std::to_string(delim) + " " +
        label(result));
    if (result && world().user.one_in(2)) world().written.push_back(result);
}

void write_another() {
    auto const &known = world().written;
    if (known.empty()) return;
    cWriting const writing;
    objref const value = world().user.pick(known);
    std::string text;
    if (world().user.one_in(2)) {
        text = cat::as_text(value);
    } else {
        std::ostringstream os;
        value->writeobj(os);
        text = os.str();
    }
    say("  writes " + shown(text.substr(0, max_written)));
}

void change_a_bag() {
    auto const &bags = world().bags;
    if (bags.empty()) return;
    objref const bag = objref::share(world().user.pick(bags));
    auto &hash = static_cast<cMapObj &>(*bag).datamap();
    static constexpr std::array keys{"a", "b", "c", "x", "0"};
    std::string const key = world().user.pick(keys);
    std::string what;
    switch (world().writing ? 3 : world().user.below(6)) {
    case 0:
        what = "puts " + key + ": " + std::to_string(hash.mapitem(key, cat::of(1)));
        break;
    case 1:
        what = "removes " + key + ": " + std::to_string(hash.delitem(key));
        break;
    case 2:
        hash.clear();
        what = "clears";
        break;
    case 3:
        what = "finds " + key + ": " + label(hash.getitem(key));
        break;
    case 4: {
        cWriting const writing;
        what = "writes " + shown(cat::as_text(bag).substr(0, max_written));
        break;
    }
    default:
        what = "sets " + key + ": " + std::to_string(bag->setattr(own_key(key), cat::of("set")));
        break;
    }
    say("  " + label(bag) + " " + what + " slots " + std::to_string(hash.slots()));
}

void raise_an_error() {
    static constexpr std::array codes{0x40000077u, 0x40020000u, 0x50000077u, 0x00000077u};
    unsigned const code = world().user.pick(codes);
    eros().clear();
    eros().set_code(code);
    eros() << "user error";
    bool const forgiven = raise_eros();
    say(std::string("  raised: ") + (forgiven ? "forgiven" : "bad"));
}

} // namespace

void act() {
    if (world().calm || ++world().acts > max_acts || !world().user.one_in(3)) return;
    switch (world().user.below(9)) {
    case 0:
    case 1:
        return read_another();
    case 2:
    case 3:
        return write_another();
    case 4:
    case 5:
        return change_a_bag();
    case 6:
        return raise_an_error();
    case 7:
        say(std::string("  reading ") + (cat::is_reading() ? "yes" : "no") + " comment '" +
            shown(cAttrScan::com_collected()) + "'");
        return;
    default:
        if (!world().user.one_in(4)) return;
        say("  throws");
        throw cErr(0x40000099u, "thrown by user code");
    }
}

} // namespace reference
