#include "unheard.h"

#include "broken_rules.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "readback.h"
#include "suggestion.h"

#include <algorithm>
#include <initializer_list>

namespace {

bool is_type(std::string const &name) { return cat::typemap().datamap().find(name) != nullptr; }

// The one entry of that key; null if there are none or several, or if it has no value.
cSource::cEntry const *named(std::vector<cSource::cEntry> const &entries, char const *key) {
    cSource::cEntry const *found = nullptr;
    for (cSource::cEntry const &entry : entries) {
        if (cat::as_string(entry.key) != key) continue;
        if (found || !entry.value) return nullptr;
        found = &entry;
    }
    return found;
}

class cUnheard {
  public:
    cUnheard(cSource const &source, std::set<cPlace> const &mistaken, cat::ReadReport &report)
        : source_(source), mistaken_(mistaken), report_(report) {}

    void attspec(cPlace place) {
        std::vector<cSource::cEntry> const entries = source_.entries(place);
        bool const has_default = std::any_of(entries.begin(), entries.end(), [](auto const &e) {
            return cat::as_string(e.key) == "default";
        });
        for (cSource::cEntry const &entry : entries) {
            std::string const key = cat::as_string(entry.key);
            if (key == "flag")
                flag(entry, has_default);
            else if (key != "type" && key != "default")
                add(entry.place, "attspec has no entry '" + shortened(key) + "'" +
                                     closest(key, {"type", "default", "flag"}));
        }
        if (auto const wrong = wrong_default(source_, place)) add(wrong->place, wrong->text);
    }

    void attlist(cPlace place) {
        for (cSource::cEntry const &entry : source_.entries(place))
            if (entry.value && entry.text != "attspec" && entry.text[0] != '#')
                add(*entry.value, "this declares no key '" + shortened(cat::as_string(entry.key)) +
                                      "': a declaration is attspec(...)");
    }

    void choice(cPlace place) {
        if (!source_.entries(place).empty() || source_.argument(place))
            add(place, "choices stand in a map: choice({a= 1; b= 2;})");
    }

  private:
    void flag(cSource::cEntry const &entry, bool has_default) {
        if (!entry.value || entry.text == "#REQUIRED" || entry.text == "#IMPLIED") return;
        if (entry.text != "#FIXED")
            add(*entry.value, "a flag is #REQUIRED, #IMPLIED or #FIXED, not " +
                                  shortened(entry.text) +
                                  closest('#' + entry.text, {"#REQUIRED", "#IMPLIED", "#FIXED"}));
        else if (!has_default)
            add(*entry.value, "#FIXED has no effect without a default");
    }

    static std::string closest(std::string const &unknown,
                               std::initializer_list<char const *> known) {
        cSuggestion suggestion(unknown);
        for (char const *const name : known) suggestion.show(name);
        return suggestion.text();
    }

    void add(cPlace place, std::string text) {
        if (mistaken_.count(place) != 0) return;
        cat::ReadError error;
        error.line = place.line;
        error.column = place.column;
        error.text = std::move(text);
        report_.keep(std::move(error));
    }

    cSource const &source_;
    std::set<cPlace> const &mistaken_;
    cat::ReadReport &report_;
};

} // namespace

// A default of nil is none, and one by a reference is left to the objects.
std::optional<cWrongDefault> wrong_default(cSource const &source, cPlace attspec) {
    std::vector<cSource::cEntry> const entries = source.entries(attspec);
    cSource::cEntry const *const type = named(entries, "type");
    cSource::cEntry const *const given = named(entries, "default");
    if (!type || !given || !is_type(type->text)) return std::nullopt;
    std::optional<std::string> const name = source.type_at(*given->value);
    if (!name || !is_type(*name) || *name == type->text || *name == cat::nil()->type().name())
        return std::nullopt;
    return cWrongDefault{*given->value, "this default must be " +
                                            with_article(shortened(type->text)) + ", not " +
                                            with_article(shortened(*name))};
}

void tell_unheard(cSource const &source, std::set<cPlace> const &mistaken,
                  cat::ReadReport &report) {
    cUnheard unheard(source, mistaken, report);
    source.typed_values([&](std::string const &type, cPlace place) {
        if (type == "attspec") unheard.attspec(place);
        if (type == "attlist") unheard.attlist(place);
        if (type == "choice") unheard.choice(place);
    });
}
