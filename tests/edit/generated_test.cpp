// Generated texts and changes: the text that apply() returns reads as the changed tree, and without
// a change it is the old text.

#include "qrv/edit/cedit.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/edit/generated_text.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <unordered_set>

namespace {

using test::Random, test::words, test::Writer;

// The text that the writer writes for the value, without the blanks of its layout.
std::string written(objref const &value) {
    cat::ExactText const exact;
    std::string text;
    bool quoted = false, escaped = false;
    for (char const c : cat::as_text(value)) {
        if (c == '"' && !escaped) quoted = !quoted;
        escaped = c == '\\' && !escaped;
        if (quoted || (c != ' ' && c != '\n')) text += c;
    }
    return text;
}

// The value of the text, or null if the text has an error.
objref read(std::string const &text) {
    cat::ReadReport report;
    std::istringstream in(text);
    objref value;
    if (cObj::readobj(in, value) != 0 || !report.empty()) return {};
    return value;
}

bool is_list(objref const &value) { return cObj::is_vector(value) || cObj::is_set(value); }

// Changes a tree at random, with functions that programs call.
class Changer {
  public:
    Changer(Random &random, objref const &root) : random_(random), root_(root) {}

    std::string change() {
        std::vector<objref> const all = containers();
        objref const target = all[random_.below(all.size())];
        cMapObj &map = static_cast<cMapObj &>(*target);
        cAttrHash &hash = map.datamap();
        cAttrNode *const node =
            hash.used() == 0 ? nullptr
                             : hash.findpos(static_cast<unsigned>(random_.below(hash.used())));
        std::string const name = node ? " " + written(node->key()) : "";
        switch (random_.below(8)) {
        case 0:
            if (!node) break;
            if (is_list(target))
                hash.vect_erase(hash.posofkey(node->key()));
            else
                map.setattr(objref(node->key()), objref());
            return "remove" + name + " of " + written(target);
        case 1:
            if (!node || cObj::is_set(target)) break;
            map.setattr(objref(node->key()), fresh());
            return "replace" + name;
        case 2:
            if (!node || cObj::is_set(target) || node->valref()->is_container() ||
                !cObj::is_good(node->valref()))
                break;
            if (cat::find_const(node->valref().get()) || node->valref()->is_type()) break;
            node->valref()->assign(fresh());
            return "assign" + name;
        case 3:
            if (is_list(target)) {
                objref const value = fresh();
                if (cObj::is_set(target) && hash.findvalue(value)) break;
                hash.vect_insert(static_cast<int>(random_.below(hash.used() + 1)), value);
                return "insert into " + written(target);
            }
            map.setattr(cat::of(std::string("new") + random_.of(words)), fresh());
            return "add to " + written(target);
        case 4: {
            if (!node || !cObj::is_map(target)) break;
            objref const key = cat::of(std::string("re_") + random_.of(words));
            hash.rename(objref(node->key()), key);
            return "rename" + name;
        }
        case 5: { // to the end of another container
            if (!node || cObj::is_set(target)) break;
            objref const value = node->valref();
            objref const other = all[random_.below(all.size())];
            if (is_list(other) || is_list(target) || is_below(other, value)) break;
            map.setattr(objref(node->key()), objref());
            static_cast<cMapObj &>(*other).setattr(cat::of(std::string("moved")), value);
            return "move" + name;
        }
        case 6: { // a second place for a value
            if (!node || cObj::is_set(target)) break;
            objref const value = node->valref();
            objref const other = all[random_.below(all.size())];
            if (is_list(other) || is_below(other, value)) break;
            static_cast<cMapObj &>(*other).setattr(cat::of(std::string("shared")), value);
            return "share" + name;
        }
        case 7: { // an equal copy, with a change in it
            if (!node || cObj::is_set(target) || !node->valref()->is_container()) break;
            objref const copy = node->valref()->clone();
            if (!cObj::is_good(copy)) break;
            cat::detach(copy, true);
            if (cObj::is_map(copy))
                static_cast<cMapObj &>(*copy).setattr(cat::of(std::string("extra")), fresh());
            map.setattr(objref(node->key()), copy);
            return "copy" + name;
        }
        }
        return "";
    }

  private:
    objref fresh() {
        static constexpr char const *const values[] = {"7",
                                                       "-1.5",
                                                       "text",
                                                       "\"two words\"",
                                                       "true",
                                                       "{n=1; m=[1,2]}",
                                                       "{}",
                                                       "[]",
                                                       "<p, q>",
                                                       "{\n}",
                                                       "{\n n=1;\n o={};\n}",
                                                       "[\n 1,\n]",
                                                       "255",
                                                       "0.75f",
                                                       "#nil",
                                                       "intf(0x20)"};
        return read(random_.of(values));
    }

    std::vector<objref> containers() const {
        std::vector<objref> found{root_};
        std::unordered_set<cObj const *> seen{root_.get()};
        for (size_t i = 0; i < found.size(); ++i) {
            cAttrHash const &hash = static_cast<cMapObj const &>(*found[i]).datamap();
            for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
                if (is_container(node->valref()) && seen.insert(node->valref().get()).second)
                    found.push_back(node->valref());
        }
        return found;
    }

    static bool is_container(objref const &value) {
        return value && !value->is_type() && dynamic_cast<cMapObj const *>(value.get());
    }

    // Returns whether storing the value in the container would create a cycle.
    bool is_below(objref const &container, objref const &value) const {
        std::vector<objref> todo{value};
        std::unordered_set<cObj const *> seen;
        while (!todo.empty()) {
            objref const next = todo.back();
            todo.pop_back();
            if (next == container) return true;
            auto const *const map = dynamic_cast<cMapObj const *>(next.get());
            if (!map || !seen.insert(next.get()).second) continue;
            for (cAttrNode const *node = map->datamap().first(); node;
                 node = map->datamap().next(node))
                todo.push_back(node->valref());
        }
        return false;
    }

    Random &random_;
    objref root_;
};

class GeneratedEdits : public QrvTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // created on first use
};

unsigned documents() {
    char const *const given = std::getenv("QRV_EDITS");
    return given ? static_cast<unsigned>(std::atoi(given)) : test::sanitized ? 400 : 2000;
}

TEST_F(GeneratedEdits, the_new_text_reads_as_the_changed_tree) {
    unsigned changed = 0, refused = 0;
    for (unsigned seed = 1; seed <= documents(); ++seed) {
        Random random(seed);
        std::string const text = Writer(random, seed % 4 == 0).document();
        std::istringstream in(text);
        std::string changes, result, wanted;
        {
            cat::ReadReport report;
            cat::SourceMap const map;
            objref root;
            if (cObj::readobj(in, root) != 0 || !report.empty()) continue;
            result = qrv::edit::apply(text, map, root, [&] {
                for (size_t count = 1 + random.below(3); count > 0; --count)
                    changes += Changer(random, root).change() + "\n";
            });
            wanted = written(root);
        }
        if (written(read(wanted)) != wanted) continue; // equal values in a set can't be written
        ++changed;
        objref const back = read(result);
        // If a key is repeated, a reference may lead to a value that is no longer in the tree. A
        // change of this value can't be written. Callers of apply() compare the trees, and then
        // rewrite the whole file.
        if (seed % 4 == 0 && (!back || written(back) != wanted)) {
            ++refused;
            continue;
        }
        ASSERT_TRUE(back) << "seed " << seed << "\n"
                          << text << "\n--\n"
                          << changes << "--\n"
                          << result;
        ASSERT_EQ(written(back), wanted) << "seed " << seed << "\n"
                                         << text << "\n--\n"
                                         << changes << "--\n"
                                         << result;
    }
    EXPECT_GT(changed, documents() / 2);
    EXPECT_LE(refused, changed / 100);
}

// As written(), for the value of the text, which is read in a new type scope.
std::string tree_in_a_scope(std::string const &text) {
    cat::TypeScope const scope;
    objref const value = read(text);
    return value ? written(value) : "unreadable";
}

TEST_F(GeneratedEdits, the_new_text_with_declared_types_reads_as_the_changed_tree) {
    unsigned changed = 0, refused = 0;
    for (unsigned seed = 1; seed <= documents(); ++seed) {
        Random random(seed);
        std::string const text = Writer(random, false, true).document();
        std::string changes, result, wanted;
        {
            cat::TypeScope const scope;
            cat::ReadReport report;
            std::istringstream in(text);
            cat::SourceMap const map;
            objref root;
            if (cObj::readobj(in, root) != 0 || !report.empty()) continue;
            result = qrv::edit::apply(text, map, root, [&] {
                for (size_t count = 1 + random.below(3); count > 0; --count)
                    changes += Changer(random, root).change() + "\n";
            });
            wanted = written(root);
        }
        // Text can't express equal values in a set, a type under another key, or a value that is
        // shared with an attribute.
        if (tree_in_a_scope(wanted) != wanted) continue;
        ++changed;
        // A change inside one of two equal containers in a set can't be written. Callers of apply()
        // compare the trees, and then rewrite the whole file.
        std::string const back = tree_in_a_scope(result);
        if (back != wanted && text.find('<') != text.npos) {
            ++refused;
            continue;
        }
        ASSERT_EQ(back, wanted) << "seed " << seed << "\n"
                                << text << "\n--\n"
                                << changes << "--\n"
                                << result;
    }
    EXPECT_LE(refused, changed / 500);
    EXPECT_GT(changed, documents() / 3);
}

TEST_F(GeneratedEdits, without_a_change_every_byte_stays) {
    unsigned texts = 0, rewritten = 0;
    for (unsigned seed = 1; seed <= documents(); ++seed) {
        Random random(seed);
        std::string const text = Writer(random, seed % 4 == 0).document();
        std::istringstream in(text);
        cat::ReadReport report;
        cat::SourceMap const map;
        objref root;
        if (cObj::readobj(in, root) != 0 || !report.empty()) continue;
        ++texts;
        std::string const result = qrv::edit::apply(text, map, root, [] {});
        if (seed % 4 == 0 && result != text) // a reference to a value that is no longer in the tree
            ++rewritten;
        else
            ASSERT_EQ(result, text) << "seed " << seed;
    }
    EXPECT_GT(texts, documents() / 2);
    EXPECT_LE(rewritten, texts / 200);
}

// --- values of another text ---

// Gives each comment a unique name, such as t12.
std::string with_named_comments(std::string const &text, char name) {
    std::string result;
    char quote = '\0';
    size_t count = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        std::string const two = text.substr(i, 2);
        bool const comment = !quote && (two == "//" || two == "/*");
        result += text[i];
        if (quote && text[i] == '\\')
            result += text[++i];
        else if (quote ? text[i] == quote : text[i] == '"' || text[i] == '\'')
            quote = quote ? '\0' : text[i];
        if (!comment) continue;
        size_t const end = two == "//" ? text.find('\n', i) : text.find("*/", i + 2);
        result += text[++i] + (" <" + std::string(1, name)) + std::to_string(count++) + ">";
        result += text.substr(i + 1, end - i - 1);
        i = std::min(end, text.size()) - 1;
    }
    return result;
}

// The number of occurrences of each name in the text.
std::map<std::string, int> names_in(std::string const &text) {
    std::map<std::string, int> names;
    for (size_t at = 0; (at = text.find(" <", at)) != text.npos; ++at)
        if (text[at + 2] == 't' || text[at + 2] == 's')
            if (std::isdigit(static_cast<unsigned char>(text[at + 3])))
                ++names[text.substr(at + 2, text.find('>', at) - at - 2)];
    return names;
}

struct Merged {
    bool read = false; // were both texts read?
    bool done = false; // were all entries merged?
    std::string text;
    std::string wanted;  // written() of the merged tree
    std::string brought; // comments of the source that belong to its entries
};

Merged merge(std::string const &target, std::string const &source, char const *letters) {
    Merged merged;
    cat::ReadReport report;
    std::istringstream in(target), from(source);
    cat::SourceMap const map;
    objref root, donor;
    if (cObj::readobj(in, root) != 0 || !report.empty()) return merged;
    qrv::edit::Edit edit(target, map, root);
    cat::SourceMap const donor_map;
    if (cObj::readobj(from, donor) != 0 || !report.empty()) return merged;
    edit.bring(source, donor_map, donor);
    for (cat::SourceComment const &comment : donor_map.comments())
        if (comment.entry != cat::SourceEntry::none && comment.entry > 0)
            merged.brought += source.substr(comment.span.begin, comment.span.size());
    merged.read = true;
    merged.done = root->attrcopy(*donor, letters);
    merged.text = edit.text();
    merged.wanted = written(root);
    return merged;
}

// Another text, or the same one with some changes.
std::string source_for(std::string const &target, Random &random, bool again) {
    if (random.one_in(2)) return Writer(random, again).document();
    cat::ReadReport const ignored;
    std::istringstream in(target);
    cat::SourceMap const map;
    objref root;
    if (cObj::readobj(in, root) != 0) return "{}";
    return qrv::edit::apply(target, map, root, [&] {
        for (size_t count = 1 + random.below(5); count > 0; --count) Changer(random, root).change();
    });
}

constexpr char const *const letters[] = {"-xx", "0as", "0xx", "-s-", "-ss", "0ss",
                                         "-0x", "-ax", "--x", "0s-", "-sx", "---"};

// The names of the comments in `from` that are not in `text`, or are there more than once.
std::string missing(std::string const &from, std::string const &text) {
    std::map<std::string, int> names = names_in(text);
    std::string found;
    for (auto const &[name, count] : names_in(from))
        if (names[name] != 1) found += name + " ";
    return found;
}

TEST_F(GeneratedEdits, the_new_text_reads_as_the_merged_tree) {
    unsigned merges = 0, refused = 0, twice = 0;
    for (unsigned seed = 1; seed <= documents() / 4; ++seed) {
        Random random(seed);
        bool const again = seed % 4 == 0;
        std::string const plain = Writer(random, again).document();
        std::string const target = with_named_comments(plain, 't');
        std::string const source = with_named_comments(source_for(plain, random, again), 's');
        std::string const how = random.of(letters);
        Merged const merged = merge(target, source, how.c_str());
        if (!merged.read || written(read(merged.wanted)) != merged.wanted) continue;
        ++merges;
        std::string const shown = "seed " + std::to_string(seed) + " " + how + "\n" + target +
                                  "\n--\n" + source + "\n--\n" + merged.text;
        objref const back = read(merged.text);
        // As above: a value that is no longer in the tree can't be changed.
        if (again && (!back || written(back) != merged.wanted)) {
            ++refused;
            continue;
        }
        ASSERT_TRUE(back) << shown;
        ASSERT_EQ(written(back), merged.wanted) << shown;
        if (how == "-xx" || how == "--x") {
            EXPECT_EQ(missing(target, merged.text), "") << shown;
        }
        if (how == "---" && !again) {
            EXPECT_EQ(merged.text, target) << shown;
        }
        if (how != "0as" || !merged.done || again) continue;
        Merged const second = merge(merged.text, source, "0as");
        if (second.wanted != merged.wanted) continue; // the second merge shares other values
        ++twice;
        EXPECT_EQ(second.text, merged.text) << shown;
    }
    EXPECT_GT(merges, documents() / 6);
    EXPECT_GT(twice, documents() / 200);
    EXPECT_LE(refused, merges / 500);
}

TEST_F(GeneratedEdits, all_comments_of_merged_entries_are_copied) {
    unsigned merges = 0, lost = 0;
    std::string example;
    for (unsigned seed = 1; seed <= documents() / 4; ++seed) {
        Random random(seed);
        bool const again = seed % 4 == 0;
        std::string const source = with_named_comments(Writer(random, again).document(), 's');
        std::string const target = random.one_in(2) ? "{}" : "{ a = 1; // one\n b = 2 }\n";
        Merged const merged = merge(target, source, "-xx");
        if (!merged.read || written(read(merged.wanted)) != merged.wanted) continue;
        ++merges;
        std::string const shown = std::to_string(seed) + "\n" + source + "\n--\n" + merged.text;
        ASSERT_EQ(written(read(merged.text)), merged.wanted) << shown;
        // If a key is repeated, only its last value is merged, with its comments.
        if (again || missing(merged.brought, merged.text).empty()) continue;
        ++lost;
        example = shown;
    }
    EXPECT_GT(merges, documents() / 6);
    EXPECT_LE(lost, merges / 1000) << example; // a set stores only the first of equal values
}

TEST_F(GeneratedEdits, the_new_text_with_declared_types_reads_as_the_merged_tree) {
    unsigned merges = 0;
    for (unsigned seed = 1; seed <= documents() / 20; ++seed) {
        Random random(seed);
        bool const again = random.one_in(5);
        std::string const target = with_named_comments(Writer(random, false, true).document(), 't');
        std::string const source = with_named_comments(Writer(random, again, true).document(), 's');
        char const *const how = random.of(letters);
        Merged merged;
        {
            cat::TypeScope const scope;
            merged = merge(target, source, how);
        }
        if (!merged.read || tree_in_a_scope(merged.wanted) != merged.wanted) continue;
        ++merges;
        ASSERT_EQ(tree_in_a_scope(merged.text), merged.wanted)
            << "seed " << seed << " " << how << "\n"
            << target << "\n--\n"
            << source << "\n--\n"
            << merged.text;
    }
    EXPECT_GT(merges, documents() / 40);
}

} // namespace
