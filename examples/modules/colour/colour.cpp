// The module "colour". It has two types. Each is created when a file or a program first names it:
//
//     color(255 128 0)                               red, green and blue, 0 to 255; can be a key
//     palette(sky= color(0 0 255); sun= "#ffff00")   a map of colours and of nothing else
//
// A color can also be created from a string such as "#ff8000" and from an int such as 0xFF8000.
//
// Unloading: each object and each type of the module is counted as a use of it, and unload() fails
// while a use exists. The registry owns the types, so a program that wants to unload the module
// removes "palette" and "color" from cat::typemap() first. Each use also shares the cModule, since
// at the end of the process the last objects may be destroyed after the static objects of this
// file.

#include "colour.h"

#include <qrv/qrv.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <istream>
#include <ostream>
#include <tuple>

namespace {

cRef<cModule> const own = make<cModule>("colour", "colours and palettes", false);

class cInUse {
  public:
    cInUse() : module_(own), use_(module_) {}
    cInUse(cInUse const &) : cInUse() {}
    cInUse &operator=(cInUse const &) { return *this; }
    ~cInUse() = default;

  private:
    cRef<cModule> module_; // outlives the use
    cModuleUse use_;
};

class cOwnType final : public cTypeObj {
  public:
    using cTypeObj::cTypeObj;
    cOwnType(cOwnType const &) = delete;
    cOwnType &operator=(cOwnType const &) = delete;
    ~cOwnType() override = default;

  private:
    cInUse use_;
};

// ---- color ----

struct cRgb {
    int r = 0;
    int g = 0;
    int b = 0;
    auto tied() const { return std::tie(r, g, b); }
    int number() const { return r << 16 | g << 8 | b; }
};

class cColour final : public cObj {
  public:
    explicit cColour(cTypeObj &type) : cObj(&type) {}
    cColour(cColour const &) = delete;
    cColour &operator=(cColour const &) = delete;
    ~cColour() override = default;

    cRgb rgb;

  private:
    cInUse use_;
};

cColour *colour_of(cObj *obj) { return dynamic_cast<cColour *>(obj); }

bool in_range(int value) { return value >= 0 && value <= 255; }

objref new_colour(objref type) { return make<cColour>(static_cast<cTypeObj &>(*type)); }

bool assign_colour(cObj &obj, objref &source) {
    cColour *const to = colour_of(&obj);
    cColour const *const from = colour_of(source);
    if (!to) return false;
    if (!from) return obj.convert(source);
    to->rgb = from->rgb;
    return true;
}

bool write_colour(cObj &obj, objref &stream) {
    cColour const *const colour = colour_of(&obj);
    auto const *const os = dynamic_cast<cOutHolder const *>(stream.get());
    if (!colour || !os) return false;
    os->val() << colour->rgb.r << ' ' << colour->rgb.g << ' ' << colour->rgb.b;
    return true;
}

// Accepts three numbers in range without further text. Otherwise the colour does not change.
bool read_colour(cObj &obj, objref &stream) {
    cColour *const colour = colour_of(&obj);
    auto const *const is = dynamic_cast<cInHolder const *>(stream.get());
    if (!colour || !is) return false;
    cRgb rgb;
    is->val() >> rgb.r >> rgb.g >> rgb.b;
    if (is->val().fail() || !in_range(rgb.r) || !in_range(rgb.g) || !in_range(rgb.b)) return false;
    is->val() >> std::ws;
    if (!is->val().eof()) return false;
    colour->rgb = rgb;
    return true;
}

bool equal_colour(cObj &a, objref &b) {
    cColour const *const x = colour_of(&a);
    cColour const *const y = colour_of(b);
    return x && y && x->rgb.tied() == y->rgb.tied();
}

bool less_colour(cObj &a, objref &b) {
    cColour const *const x = colour_of(&a);
    cColour const *const y = colour_of(b);
    return x && y && x->rgb.tied() < y->rgb.tied();
}

// The hooks of a key: equal keys have equal hashes.
unsigned int hash_colour(objref const &value) {
    cColour const *const colour = colour_of(value);
    return colour ? static_cast<unsigned int>(colour->rgb.number()) : 0;
}

bool same_colour(objref const &a, objref const &b) {
    objref other = b;
    return a && equal_colour(*a, other);
}

bool from_number(cObj &obj, objref &source) {
    int const number = static_cast<cObjDR<int> const &>(*source).val();
    cColour *const colour = colour_of(&obj);
    if (!colour || number < 0 || number > 0xFFFFFF) return false;
    colour->rgb = {number >> 16, number >> 8 & 0xFF, number & 0xFF};
    return true;
}

bool from_text(cObj &obj, objref &source) {
    std::string const text = cat::as_string(source);
    int number = 0;
    if (text.size() != 7 || text[0] != '#' || text[1] == '-') return false;
    char const *const end = text.data() + text.size();
    if (std::from_chars(text.data() + 1, end, number, 16).ptr != end) return false;
    objref value = cat::of(number);
    return from_number(obj, value);
}

void setup_colour(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(new_colour));
    type.set_tmember("assign", make<cExeMember>(assign_colour));
    type.set_tmember("write", make<cExeMember>(write_colour));
    type.set_tmember("read", make<cExeMember>(read_colour));
    type.set_tmember("equal", make<cExeMember>(equal_colour));
    type.set_tmember("less", make<cExeMember>(less_colour));
    type.set_hash(hash_colour, same_colour);
    type.set_converter(cat::type_int(), from_number);
    type.set_converter(cat::type_string(), from_text);
}

// ---- palette ----

class cPalette final : public cMapObj {
  public:
    explicit cPalette(cTypeObj &type) : cMapObj(&type, true) {}
    cPalette(cPalette const &) = delete;
    cPalette &operator=(cPalette const &) = delete;
    ~cPalette() override = default;

  private:
    cInUse use_;
};

objref new_palette(objref type) { return make<cPalette>(static_cast<cTypeObj &>(*type)); }

// Converts values of other types to a color, and refuses those that it can't convert.
bool set_entry(cObj &obj, objref &key, objref &value) {
    if (cObj::is_kill(value) || colour_of(value)) return cTomMap::setattr(obj, key, value);
    objref made = cat::find_type("color").newobj();
    return cObj::is_good(made) && made->assign(value) && cTomMap::setattr(obj, key, made);
}

bool read_palette(cObj &obj, objref &stream) {
    auto *const palette = dynamic_cast<cPalette *>(&obj);
    auto const *const is = dynamic_cast<cInHolder const *>(stream.get());
    if (!palette || !is) return false;
    cRef<cMapObj> const entries = make<cMapObj>();
    if (entries->datamap().read_hash(is->val(), nullptr) == 0) return false;
    for (cIterObj it = entries->begin(); it.valid(); ++it)
        if (!palette->setattr(it.key(), it.valref())) return false;
    return true;
}

void setup_palette(cTypeObj &type) {
    type.inherit(cat::type_map());
    type.set_tmember("newobj", make<cExeMember>(new_palette));
    type.set_tmember("setattr", make<cExeMember>(set_entry));
    type.set_tmember("write", make<cExeMember>(cTomMap::m_write0));
    type.set_tmember("read", make<cExeMember>(read_palette));
    type.set_tmember("wformat", cat::of("sc"));
}

// ---- the entries of the module in the repository ----

class cFactory final : public cTypeCtor {
  public:
    cFactory(char const *name, cTypeObj::setup_function setup, char const *comment)
        : name_(name), setup_(setup), entry_(name, static_cast<cTypeCtor *>(this), comment) {}
    cFactory(cFactory const &) = delete;
    cFactory &operator=(cFactory const &) = delete;
    ~cFactory() override = default;

    typeref make() override { return typeref::adopt(new cOwnType(name_, setup_)); }

  private:
    char const *name_;
    cTypeObj::setup_function setup_;
    cEntry<cTypeCtor> entry_;
};

class cWebNames final : public cColourNames {
  public:
    cWebNames() = default;
    cWebNames(cWebNames const &) = delete;
    cWebNames &operator=(cWebNames const &) = delete;
    ~cWebNames() override = default;

    std::string name_of(int rgb) const override {
        static constexpr std::array<std::pair<int, char const *>, 6> names{{{0x000000, "black"},
                                                                            {0x0000FF, "blue"},
                                                                            {0x008000, "green"},
                                                                            {0xFF0000, "red"},
                                                                            {0xFFA500, "orange"},
                                                                            {0xFFFFFF, "white"}}};
        auto const *const found = std::find_if(names.begin(), names.end(),
                                               [rgb](auto const &n) { return n.first == rgb; });
        return found == names.end() ? std::string() : found->second;
    }

  private:
    cEntry<cColourNames> entry_{"web", this, "names of the web's colours"};
};

cFactory colour_factory("color", setup_colour, "red, green and blue");
cFactory palette_factory("palette", setup_palette, "a map of colours");
cWebNames web_names;

} // namespace
