#include "tests/reference/trees.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/creadreport.h"
#include "tests/reference/texts.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <array>
#include <bit>
#include <cmath>

namespace reference {

cTrees::cTrees(cRandom &random)
    : random_(random), user_(!random.one_in(3)), cycles_(random.one_in(6)) {}

cTrees::~cTrees() {
    made_.clear();
    for (hashref const &hash : in_cycles_) hash->clear();
}

objref cTrees::scalar() {
    static constexpr std::array texts{
        "a",      "text",   "two words", "",      "true", "false", "line\nend", "q\"uo'te",
        "back\\", "#const", "12",        "x\xE4", "\x01", "// c",  "/* c */",   "a/b"};
    static constexpr std::array doubles{
        0.0,       -0.0,      1.0,  0.1,      1.0 / 3, 1e22,   123456.0,
        1234567.0, -123456.0, 1e-7, 100000.0, 1e300,   5e-324, 0.30000000000000004,
        999999.5,  3.5};
    switch (random_.below(12)) {
    case 0:
    case 1:
        return cat::of(static_cast<int>(random_.below(100)) - 50);
    case 2:
        return cat::of(static_cast<int>(random_.next()));
    case 3:
        return cat::of(random_.pick(doubles));
    case 4: {
        auto const any = std::bit_cast<double>(random_.next());
        return cat::of(any);
    }
    case 5: {
        auto const any = std::bit_cast<float>(static_cast<std::uint32_t>(random_.next()));
        return cat::of(
            random_.one_in(2) ? any : static_cast<float>(static_cast<int>(random_.below(999))) / 8);
    }
    case 6: {
        static constexpr std::array good{0, 1, 2};
        objref const constants[] = {cat::nil(), cat::btrue(), cat::bfalse(), cat::bad(),
                                    cat::badfind()};
        return random_.one_in(8) ? constants[random_.below(5)] : constants[random_.pick(good)];
    }
    case 7:
        return cat::of(random_.one_in(2));
    case 8:
        return user_ ? user_value() : cat::of("plain");
    default:
        return cat::of(random_.pick(texts));
    }
}

objref cTrees::user_value() {
    static constexpr std::array types{"Box", "Box", "Conv", "Bare", "Key", "Num", "NumKey", "Text"};
    objref value = new_user_value(random_.pick(types), std::string(1, "abc d"[random_.below(5)]));
    auto *const probe = dynamic_cast<cProbe *>(value.get());
    if (probe && random_.one_in(4) && !made_.empty()) probe->held = random_.pick(made_);
    if (random_.one_in(20)) return make<cExeMember>(cFunction1([](objref of) { return of; }));
    if (random_.one_in(20)) return make<cSignalObj>();
    return value;
}

objref cTrees::key() {
    static constexpr std::array names{"a",   "b",   "c",       "x", "y",    "wformat",
                                      "k l", "a/b", "#hidden", "",  "true", "1"};
    switch (random_.below(16)) {
    case 0:
        return cat::of(1.5);
    case 1:
        return cat::of(0.25f);
    case 2:
        return user_ ? new_user_value("Key", std::string(1, "abc"[random_.below(3)])) : cat::of(7);
    case 3:
        return user_ ? new_user_value("NumKey", "ab") : cat::of(-3);
    case 4:
    case 5:
        return cat::of(static_cast<int>(random_.below(6)));
    case 6:
        return cat::of("key" + std::to_string(random_.below(200)));
    default:
        return cat::of(names[random_.below(random_.one_in(3) ? names.size() : 5)]);
    }
}

void cTrees::decorate(objref const &value) {
    if (cat::find_const(value.get())) return;
    static constexpr std::array comments{
        " // a", " /* b */", "\n  // c\n  // d", " /* two\n lines */", "no comment", "//"};
    static constexpr std::array layouts{"sc", "wc", "", "s", "w", "sw"};
    if (random_.one_in(9)) value->set_comment(random_.pick(comments), true);
    if (dynamic_cast<cMapObj *>(value.get())) {
        if (random_.one_in(2)) value->set_omember("wformat", cat::of(random_.pick(layouts)));
        if (random_.one_in(40)) value->setflags(random_.one_in(2) ? of_const_keys : of_const);
    } else if (random_.one_in(40)) {
        value->setflags(of_const);
    }
    if (random_.one_in(30)) value->set_omember("own", cat::of(5));
    if (!user_) return;
    if (random_.one_in(30)) give_own_method(*value);
    if (random_.one_in(30)) watch_changes(*value);
}

void cTrees::put(cMapObj &container, objref const &value) {
    cAttrHash &hash = container.datamap();
    bool const listed = container.is_vector() || container.is_set();
    if (!listed)
        hash.mapitem(key(), value);
    else if (container.is_set() && !random_.one_in(3))
        container.append(value);
    else
        hash.vect_append(value);
}

// Values that text can create: specifications, choices, attribute sets, back references.
objref cTrees::from_text() {
    cat::ReadReport const quiet;
    objref value;
    cObj::readobj(cTexts(random_).text().c_str(), value);
    return cObj::is_good(value) ? value : cat::of("unread");
}

objref cTrees::container(int depth) {
    cRef<cMapObj> made;
    switch (random_.below(8)) {
    case 0:
    case 1:
        made = cRef<cMapObj>::adopt(new cVectorObj);
        break;
    case 2:
        made = cRef<cMapObj>::adopt(new cSetObj);
        break;
    case 3:
        if (user_) {
            static constexpr std::array types{"Bag", "Hoard", "Loud"};
            objref const bag = new_user_value(random_.pick(types), "");
            made = cRef<cMapObj>::share(static_cast<cMapObj *>(bag.get()));
            break;
        }
        [[fallthrough]];
    default:
        made = make<cMapObj>();
        break;
    }
    objref const value = made;
    if (cycles_ && random_.one_in(3)) in_cycles_.push_back(made->datamap_ref());
    if (cycles_ && random_.one_in(3)) made_.push_back(value); // may be put into itself
    unsigned const count = random_.one_in(12) ? 60 + random_.below(60) : random_.below(7);
    for (unsigned i = 0; i < count; ++i) put(*made, count > 10 ? scalar() : this->value(depth - 1));
    for (unsigned n = random_.one_in(8) ? random_.below(4) : 0; n && made->size() > 0; --n) {
        cAttrNode const *const node =
            made->datamap().findpos(random_.below(static_cast<unsigned>(made->size())));
        objref const present = node->key();
        made->datamap().delitem(present);
    }
    if (random_.one_in(25)) {
        objref const spec_key = key();
        if (spec_key->type().is_keytype())
            made->set_attspec(spec_key,
                              random_.one_in(2)
                                  ? specref::adopt(new cAttspec(asf_implied, &cat::type_int()))
                                  : specref::adopt(new cAttspec(cat::of(3), 0)));
    }
    decorate(value);
    made_.push_back(value);
    return value;
}

objref cTrees::value(int depth) {
    if (!made_.empty() && random_.one_in(7)) return random_.pick(made_);
    if (depth > 0 && random_.one_in(2)) return container(depth);
    if (random_.one_in(25)) return from_text();
    objref const value = scalar();
    decorate(value);
    if (random_.one_in(4)) made_.push_back(value);
    return value;
}

objref cTrees::tree() {
    bool const calm = world().calm;
    world().calm = true;
    objref tree = random_.one_in(6)   ? from_text()
                  : random_.one_in(9) ? value(2)
                                      : container(static_cast<int>(1 + random_.below(4)));
    if (cycles_) // any value created here may contain itself
        for (objref const &made : made_)
            if (auto *const map = dynamic_cast<cMapObj *>(made.get()))
                in_cycles_.push_back(map->datamap_ref());
    world().calm = calm;
    return tree;
}

} // namespace reference
