#include "tools/qrv/rules/ignored.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/rules/broken_rules.h"
#include "tools/qrv/rules/suggestion.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>
#include <initializer_list>

namespace {

// Is this a choice, a declaration of choices, or a scalar? The reader ignores all but their first
// value.
bool takes_one_value(std::string const &name) {
    cTypeObj const *const type = known_type(name);
    if (!type) return false;
    if (&type->type() == &cat::typetype_choice() || type == &cat::typetype_choice()) return true;
    for (cTypeObj const *const scalar : {&cat::type_bool(), &cat::type_int(), &cat::type_float(),
                                         &cat::type_double(), &cat::type_string()})
        if (type == scalar) return true;
    return false;
}

// The only entry of this key; null if there is not exactly one, or if it has no value.
cSource::cEntry const *named(std::vector<cSource::cEntry> const &entries, char const *key) {
    cSource::cEntry const *found = nullptr;
    for (cSource::cEntry const &entry : entries) {
        if (cat::as_string(entry.key) != key) continue;
        if (found || !entry.value) return nullptr;
        found = &entry;
    }
    return found;
}

class cIgnored {
  public:
    cIgnored(cSource const &source, cPlace end, std::set<cPlace> const &mistaken,
             cat::ReadReport &report)
        : source_(source), end_(end), mistaken_(mistaken), report_(report) {}

    void attspec(std::vector<cSource::cEntry> const &entries) {
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
        if (auto const wrong = wrong_default(source_, entries)) add(wrong->place, wrong->text);
    }

    void attlist(std::vector<cSource::cEntry> const &entries) {
        for (cSource::cEntry const &entry : entries)
            if (entry.value && entry.text[0] != '#' && source_.type_at(*entry.value) != "attspec")
                add(*entry.value, "this declares no key '" + shortened(cat::as_string(entry.key)) +
                                      "': a declaration is attspec(...)");
    }

    // True if the value needs no further test.
    bool choice(cSource::cTyped const &typed) {
        if (typed.entries.empty() && !source_.argument(typed.place)) return false;
        add(typed.place, "write the choices as a map: choice({a= 1; b= 2;})");
        return true;
    }

    void after(cPlace place, std::string const &type) {
        add(place, "this is ignored: only the first value in the brackets of " + shortened(type) +
                       " is read");
    }

    // Tests an intf: one word, of which 32 bits are stored.
    void formatted(cPlace place) {
        if (mistaken_.count(place) != 0) return;
        std::vector<cSource::cWord> const words = source_.words(place);
        if (words.empty()) return;
        if (words.size() > 1) after(words[1].place, "intf");
        std::string text = words[0].text;
        std::erase(text, '"');
        if (std::optional<int> const number = misread(text))
            add(words[0].place, "intf reads " + shortened(text) + " as " + std::to_string(*number));
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
        if (place >= end_ || mistaken_.count(place) != 0) return;
        cat::ReadError error;
        error.line = place.line;
        error.column = place.column;
        error.text = std::move(text);
        report_.keep(std::move(error));
    }

    cSource const &source_;
    cPlace const end_; // the end of the text that was read
    std::set<cPlace> const &mistaken_;
    cat::ReadReport &report_;
};

} // namespace

// A default of nil counts as absent; a default by a reference is not tested.
std::optional<cWrongDefault> wrong_default(cSource const &source,
                                           std::vector<cSource::cEntry> const &entries) {
    cSource::cEntry const *const type = named(entries, "type");
    cSource::cEntry const *const given = named(entries, "default");
    if (!type || !given || !known_type(type->text)) return std::nullopt;
    std::optional<std::string> const name = source.type_at(*given->value);
    if (!name || !known_type(*name) || *name == type->text || *name == cat::nil()->type().name())
        return std::nullopt;
    return cWrongDefault{*given->value, "this default must be " +
                                            with_article(shortened(type->text)) + ", not " +
                                            with_article(shortened(*name))};
}

void report_ignored(cSource const &source, cPlace end, std::set<cPlace> const &mistaken,
                    cat::ReadReport &report) {
    cIgnored ignored(source, end, mistaken, report);
    auto const wanted = [](std::string const &type) {
        return type == "attspec" || type == "attlist" || type == "intf" || takes_one_value(type);
    };
    source.typed_values(wanted, [&](cSource::cTyped const &typed) {
        if (typed.type == "attspec") return ignored.attspec(typed.entries);
        if (typed.type == "attlist") return ignored.attlist(typed.entries);
        if (typed.type == "intf") return ignored.formatted(typed.place);
        if (typed.type == "choice" && ignored.choice(typed)) return;
        if (typed.after) ignored.after(*typed.after, typed.type);
    });
}
