#include "unheard.h"

#include "broken_rules.h"
#include "qrv/core/cobjd.h"
#include "suggestion.h"

#include <algorithm>
#include <initializer_list>

namespace {

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

void tell_unheard(cSource const &source, std::set<cPlace> const &mistaken,
                  cat::ReadReport &report) {
    cUnheard unheard(source, mistaken, report);
    source.typed_values([&](std::string const &type, cPlace place) {
        if (type == "attspec") unheard.attspec(place);
        if (type == "attlist") unheard.attlist(place);
        if (type == "choice") unheard.choice(place);
    });
}
