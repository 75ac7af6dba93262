// Compares composed text with text written to a stream piece by piece: the same bytes, and the same
// at each moment at which user code runs.
#include "tests/text/random_tree.h"
#include "tests/text/write_support.h"

#include "qrv/core/ceros.h"
#include "qrv/text/write/cexacttext.h"
#include "text/state/ctext_state.h"
#include "text/write/ccomposer.h"

#include <algorithm>
#include <functional>
#include <iomanip>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

using namespace test;

namespace {

class Composer : public QrvTest {};
class ComposedAndNot : public QrvTest {};

// Counts the pieces that it receives. The writer composes for a std::stringbuf, but not for a class
// derived from it.
class cPieceBuffer : public std::stringbuf {
  public:
    std::string counts() const {
        return std::to_string(pieces_) + " pieces, " + std::to_string(flushes_) + " flushes";
    }

  protected:
    std::streamsize xsputn(char const *bytes, std::streamsize count) override {
        ++pieces_;
        return std::stringbuf::xsputn(bytes, count);
    }
    int sync() override {
        ++flushes_;
        return std::stringbuf::sync();
    }

  private:
    int pieces_ = 0;
    int flushes_ = 0;
};

class cPieceStream : public std::ostream {
  public:
    cPieceStream() : std::ostream(nullptr) {
        rdbuf(&buffer_);
        imbue(std::locale::classic());
    }
    cPieceBuffer &buffer() { return buffer_; }

  private:
    cPieceBuffer buffer_;
};

// In exact text a method gets a stream of the library, whose text can't be read.
std::string text_in(std::ostream const &os) {
    auto const *const buffer = dynamic_cast<std::stringbuf *>(os.rdbuf());
    return buffer ? buffer->str() : "...";
}

// text_in() can read both kinds of streams.
std::unique_ptr<std::ostream> new_stream(bool composed) {
    if (!composed) return std::make_unique<cPieceStream>();
    auto os = std::make_unique<std::ostringstream>();
    os->imbue(std::locale::classic());
    return os;
}

// The result of one writing: text, return value, stream state, messages, errors, and what user code
// saw.
struct cOutcome {
    std::string text, log;
    bool result = false;
    int state = 0;
    unsigned failed = 0;
    bool operator==(cOutcome const &) const = default;
};

std::ostream &operator<<(std::ostream &os, cOutcome const &outcome) {
    return os << outcome.text << "\n--- " << outcome.result << outcome.state << outcome.failed
              << "\n"
              << outcome.log;
}

// A tree with objects of a user type that act while they are written. Their numbers determine what
// they do to the stream and to the tree, so that two trees with one seed behave the same.
class cActingTree {
  public:
    explicit cActingTree(std::uint64_t seed) : random_(seed), tree_(seed * 7 + 1) {
        current = this;
        root_ = container(4);
        std::vector<objref> const made = std::exchange(containers_, {});
        values_.clear();
        collect();
        for (objref const &one : made)
            if (std::find(containers_.begin(), containers_.end(), one) == containers_.end())
                removed_.push_back(one);
        containers_.clear(); // from here on only the tree owns its contents
        values_.clear();
    }
    cActingTree(cActingTree const &) = delete;
    cActingTree &operator=(cActingTree const &) = delete;
    ~cActingTree() {
        collect();
        std::vector<objref> const all = containers_;
        for (objref const &one : all) map_of(one).clear(); // breaks cycles
        current = nullptr;
    }

    objref const &root() const { return root_; }
    std::string &log() { return log_; }

    static bool act(cObj &obj, objref &args) {
        return current->act(number_of(obj), stream_of(args));
    }

  private:
    static cActingTree *current;

    size_t below(size_t n) { return static_cast<size_t>(random_() % n); }

    objref container(int depth) {
        static constexpr char const *layouts[] = {nullptr, "sc", "wc", "sc", "wc", ""};
        char const *const layout = layouts[below(6)];
        size_t const kind = below(3);
        objref const made = kind == 0   ? new_map(layout)
                            : kind == 1 ? new_vector(layout)
                                        : new_set(layout);
        containers_.push_back(made);
        if (below(8) == 0) made->set_comment(" // of a container", true);
        for (size_t n = below(7), i = 0; i < n; ++i) {
            objref const value = this->value(depth);
            values_.push_back(value);
            if (kind == 0)
                put(made, "k" + std::to_string(below(12)), value);
            else
                append(made, value);
        }
        return made;
    }
    objref value(int depth) {
        switch (below(12)) {
        case 0:
            return acting_.of(static_cast<int>(below(1000)));
        case 1: // a shared value, possibly one still being created: a cycle
            return below(3) == 0     ? containers_[below(containers_.size())]
                   : values_.empty() ? cat::nil()
                                     : values_[below(values_.size())];
        case 2: { // shares its hash with another one
            auto const &hash = map_of(containers_[below(containers_.size())]).datamap_ref();
            objref const twin = objref::adopt(new cMapObj(hash));
            if (below(2)) twin->set_omember("wformat", cat::of("sc"));
            return twin;
        }
        case 3: {
            objref const number = cat::of(static_cast<int>(below(100)));
            number->set_omember("//", acting_.of(-1)); // no converter: not written
            return number;
        }
        case 4:
        case 5:
        case 6:
            if (depth > 0) return container(depth - 1);
            [[fallthrough]];
        default:
            return tree_.tree(0);
        }
    }

    void collect() {
        containers_.assign(1, root_);
        values_.clear();
        std::set<cObj const *> met{root_.get()};
        for (objref const &one : removed_)
            if (one->is_container() && met.insert(one.get()).second) containers_.push_back(one);
        for (size_t i = 0; i < containers_.size(); ++i) {
            cAttrHash const &hash = map_of(objref(containers_[i])).datamap();
            for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
                if (!node->valref() || !met.insert(node->valref().get()).second) continue;
                values_.push_back(node->valref());
                if (node->value().is_container()) containers_.push_back(node->valref());
            }
        }
    }

    void remove(cAttrHash &hash, cAttrNode const &node) {
        removed_.push_back(node.valref());
        hash.delitem(objref(node.key()));
    }

    bool act(int number, std::ostream &os) {
        log_ += "act " + std::to_string(number) + " after " + text_in(os) + "\n";
        collect();
        objref const one = containers_[static_cast<size_t>(number) % containers_.size()];
        objref other = values_.empty() ? cat::nil() : values_[below(values_.size())];
        values_.clear();
        containers_.clear();
        cAttrHash &hash = map_of(one).datamap();
        switch (number % 13) {
        case 0:
            os << "partly";
            throw cErr(0x40000007U, "act " + std::to_string(number));
        case 1:
            if (!hash.empty()) remove(hash, *hash.first());
            break;
        case 2:
            if (!hash.empty()) remove(hash, *hash.last());
            break;
        case 3:
            if (cAttrNode const *const before = hash.find("shared")) remove(hash, *before);
            hash.mapitem("shared", other);
            break;
        case 4:
            if (nested_ < 3) { // the tree may have cycles
                ++nested_;
                one->writeobj(os);
                --nested_;
            }
            break;
        case 5:
            os << std::setprecision(3);
            break;
        case 6:
            os << std::hex << std::showpos;
            break;
        case 7:
            os.copyfmt(std::ios(nullptr));
            os.imbue(std::locale::classic());
            break;
        case 8:
            if (nested_ < 3) {
                ++nested_;
                log_ += cat::as_text(one) + "\n";
                --nested_;
            }
            break;
        case 9:
            eros().clear();
            eros().set_code(0x40000009U);
            eros() << "raised";
            raise_eros();
            break;
        case 10:
            one->set_omember("wformat", cat::of("sc"));
            break;
        case 11:
            os << '\n';
            return false;
        default:
            os.width(9);
        }
        os << number;
        return true;
    }

    std::mt19937_64 random_;
    cRandomTree tree_;
    cForeignType acting_{"acting", act};
    std::vector<objref> containers_, values_;
    std::vector<objref> removed_; // removed from the tree; they may contain cycles
    objref root_;
    std::string log_;
    int nested_ = 0;
};

cActingTree *cActingTree::current = nullptr;

cOutcome outcome_of(objref const &root, bool composed, bool exact, std::string &log) {
    cErrorLog errors;
    cMessageLog messages;
    std::optional<cat::ExactText> guard;
    if (exact) guard.emplace();
    auto const os = new_stream(composed);
    cOutcome outcome;
    outcome.result = root->writeobj(*os);
    outcome.text = text_in(*os);
    outcome.state = static_cast<int>(os->rdstate());
    outcome.failed = guard ? guard->failed() : 0;
    outcome.log = log + messages.take() + errors.text();
    EXPECT_TRUE(text_state().idle());
    return outcome;
}

} // namespace

TEST_F(ComposedAndNot, random_trees_give_the_same_text) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed)
        for (bool const exact : {false, true}) {
            objref const root = cRandomTree(seed).container(4);
            std::string log;
            ASSERT_EQ(outcome_of(root, true, exact, log), outcome_of(root, false, exact, log))
                << seed;
        }
}

TEST_F(ComposedAndNot, composing_makes_no_difference_to_user_code) {
    for (std::uint64_t seed = 0; seed < 1500; ++seed)
        for (bool const exact : {false, true}) {
            cOutcome outcomes[2];
            for (bool const composed : {false, true}) {
                cActingTree tree(seed);
                outcomes[composed] = outcome_of(tree.root(), composed, exact, tree.log());
            }
            ASSERT_EQ(outcomes[1], outcomes[0]) << seed << (exact ? " exact" : " plain");
        }
}

TEST_F(ComposedAndNot, streams_with_other_settings_give_the_same_text) {
    std::function<void(std::ostream &)> const settings[] = {
        [](std::ostream &os) { os << std::hex << std::showbase; },
        [](std::ostream &os) { os << std::setprecision(12); },
        [](std::ostream &os) { os << std::setw(12); },
        [](std::ostream &os) { os << std::setw(12) << std::setfill('*') << std::left; },
        [](std::ostream &os) { os << std::unitbuf; },
        [](std::ostream &os) { os.setstate(std::ios_base::failbit); },
        [](std::ostream &os) { os.exceptions(std::ios_base::badbit); },
    };
    objref const root = new_map(), inner = new_vector();
    append(inner, cat::of(0.123456789));
    append(inner, cat::of(-100));
    put(root, "inner", inner);
    put(root, "text", cat::of("a b"));
    for (bool const exact : {false, true})
        for (auto const &set : settings) {
            std::string texts[2];
            for (bool const composed : {false, true}) {
                std::optional<cat::ExactText> guard;
                if (exact) guard.emplace();
                auto const os = new_stream(composed);
                set(*os);
                root->writeobj(*os);
                texts[composed] = text_in(*os);
            }
            EXPECT_EQ(texts[1], texts[0]);
        }
}

TEST_F(ComposedAndNot, an_omitted_comment_is_reported_with_the_path_of_its_value) {
    objref const root = new_map(), inner = new_vector("wc"), number = cat::of(1);
    number->set_comment("no comment", true);
    append(inner, cat::of(0));
    append(inner, number);
    put(root, "x", inner);
    std::string log;
    cOutcome const composed = outcome_of(root, true, true, log);
    EXPECT_EQ(composed, outcome_of(root, false, true, log));
    EXPECT_EQ(composed.log, "0x40000001 Value cannot be written, path : /x/1\n");
}

TEST_F(ComposedAndNot, long_strings_and_deep_indents_give_the_same_text) {
    objref const root = new_map();
    for (size_t const size : std::initializer_list<size_t>{1000, 1023, 1024, 2045, 2046, 2047, 4093,
                                                           4094, 4095, 4096, 4097, 9000}) {
        put(root, "k" + std::to_string(size), cat::of(std::string(size, '\'')));
        put(root, std::string(size, 'n'), cat::of(std::string(size, 'x')));
    }
    objref inner = new_map();
    put(inner, "a", cat::of(1));
    for (int i = 0; i < 1500; ++i) {
        objref const outer = new_map();
        put(outer, "k", inner);
        inner = outer;
    }
    put(root, "deep", inner);
    std::string log;
    EXPECT_EQ(outcome_of(root, true, false, log), outcome_of(root, false, false, log));
    EXPECT_EQ(outcome_of(root, true, true, log), outcome_of(root, false, true, log));
}

TEST_F(Composer, other_streams_receive_each_piece_and_each_flush_separately) {
    objref const root = new_map(), inner = new_vector();
    append(inner, cat::of(1));
    append(inner, cat::of("a b"));
    put(root, "inner", inner);
    put(root, "again", inner);
    put(root, "number", cat::of(1.5));
    cPieceStream plain, exact;
    root->writeobj(plain);
    EXPECT_EQ(text_in(plain), "{\n  inner= [1, \"a b\", ];\n  again= #cRef(/inner);\n"
                              "  number= 1.50000;\n}");
    EXPECT_EQ(plain.buffer().counts(), "14 pieces, 6 flushes");
    cat::ExactText const guard;
    root->writeobj(exact);
    EXPECT_EQ(exact.buffer().counts(), "18 pieces, 6 flushes");
}

TEST_F(Composer, user_code_finds_the_preceding_text_in_the_stream) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    {
        cComposer out(os);
        out.begin();
        ASSERT_TRUE(out.composing());
        out.put("text");
        EXPECT_EQ(os.str(), "");
        {
            cUserCode const user(out);
            EXPECT_EQ(os.str(), "text");
            EXPECT_FALSE(out.composing());
        }
        EXPECT_TRUE(out.composing());
        out.put('!');
    }
    EXPECT_EQ(os.str(), "text!");
}

TEST_F(Composer, user_code_that_changes_the_stream_ends_composing) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    cComposer out(os);
    out.begin();
    {
        cUserCode const user(out);
        os << std::hex;
    }
    EXPECT_FALSE(out.composing());
    {
        cUserCode const user(out);
        os << std::dec;
    }
    EXPECT_FALSE(out.composing()); // the stream is not examined again
}

TEST_F(Composer, a_buffer_that_refuses_text_sets_the_same_stream_state) {
    std::stringstream os(std::ios_base::in);
    os.imbue(std::locale::classic());
    objref const map = new_map();
    EXPECT_TRUE(map->writeobj(os));
    EXPECT_EQ(os.rdstate(), std::ios_base::badbit | std::ios_base::failbit);
}

TEST_F(Composer, the_text_before_an_exception_is_in_the_stream) {
    cForeignType const foreign(
        "test_foreign", [](cObj &, objref &) -> bool { throw std::runtime_error("foreign"); });
    objref const map = new_map("sc");
    put(map, "a", cat::of(1));
    put(map, "b", foreign.of(1));
    std::ostringstream os;
    os.imbue(std::locale::classic());
    EXPECT_THROW(map->writeobj(os), std::runtime_error);
    EXPECT_EQ(os.str(), "{a= 1; b= test_foreign(");
}
