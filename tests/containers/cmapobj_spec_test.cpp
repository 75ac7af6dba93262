// Specifications in a map: every combination of flags with every kind of present and new value, for
// setattr and getattr, compared with a table of rules.

#include "qrv/containers/cattspec.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class MapSpec : public QrvTest {
  protected:
    objref const standard = of(9), one = of(1), other = of(2), text = of("x");
    objref const present_values[4] = {nullptr, cat::nil(), one, text}; // null: the key is absent
    objref const coming_values[7] = {nullptr, cat::badfind(), cat::nil(), cat::bad(),
                                     one,     other,          text};

    // A map with the key "a", its specification and its value.
    mapref specified(int flags, objref const &present) const {
        specref const spec = specref::adopt(new cAttspec(standard, asf_fixtype));
        spec->flags(flags); // also combinations that no constructor creates
        mapref made = map();
        made->set_attspec("a", spec);
        made->datamap().mapitem("a", present);
        return made;
    }
};

struct cOutcome {
    bool result;
    objref value; // null: absent
    char const *what;
};

std::string error(std::string const &what, char const *end) {
    return "0x40040000 " + what + " attribute, key 'a' in object type 'map'" + end + "\n";
}

TEST_F(MapSpec, setattr_with_every_combination) {
    auto const expected = [&](int flags, objref const &present, objref const &coming) -> cOutcome {
        bool const there = present.get() != nullptr;
        bool const gone = !coming || coming == cat::badfind();
        if (!flags)
            return {coming != cat::bad(),
                    gone                   ? objref()
                    : coming == cat::bad() ? present
                                           : coming,
                    ""};
        if ((flags & asf_fixref) && there && present != cat::nil())
            return {coming == present, present, coming == present ? "" : "FIXED REF"};
        if (gone || coming == cat::nil()) {
            if (flags & asf_implied) return {there, there ? cat::nil() : present, ""};
            if (flags & asf_default) return {there, there ? standard : present, ""};
            if (flags & asf_required) return {false, present, "REQUIRED"};
        }
        bool const other_type = coming && &coming->type() != &cat::type_int();
        if ((flags & asf_fixtype) && other_type) return {false, present, "FIXED TYPE"};
        if (gone) return {true, nullptr, ""};
        if (coming == cat::bad()) return {false, present, ""};
        return {true, coming, ""};
    };
    for (int flags = 0; flags <= asf_all; ++flags)
        for (objref const &present : present_values)
            for (objref const &coming : coming_values) {
                SCOPED_TRACE(std::to_string(flags) + ": " + shape(present) + " <- " +
                             shape(coming));
                mapref const m = specified(flags, present);
                cOutcome const want = expected(flags, present, coming);
                cErrorLog errors;
                EXPECT_EQ(m->setattr(of("a"), coming), want.result);
                std::string const what = want.what;
                EXPECT_EQ(errors.text(),
                          what.empty() ? "" : error(what, what == "REQUIRED" ? "  is missed" : ""));
                EXPECT_EQ(m->datamap().getitem("a"), want.value ? want.value : cat::badfind());
            }
}

TEST_F(MapSpec, getattr_with_every_combination) {
    for (int flags = 0; flags <= asf_all; ++flags)
        for (objref const &present : present_values) {
            SCOPED_TRACE(std::to_string(flags) + ": " + shape(present));
            mapref const m = specified(flags, present);
            objref want = present ? present : cat::badfind();
            std::string said;
            if (!present || present == cat::nil()) {
                if (flags & asf_required) {
                    want = cat::bad();
                    said = error("REQUIRED", "  is missed");
                } else if (flags & asf_implied) {
                    want = cat::nil();
                } else if (flags & asf_default) {
                    want = standard;
                }
            }
            cErrorLog errors;
            EXPECT_EQ(m->getattr(of("a")), want);
            EXPECT_EQ(errors.text(), said);
        }
}

} // namespace
