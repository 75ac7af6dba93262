// The writer searches tables of members for layouts and comments. If a table has keys of a user
// type, the search calls hooks of that type. At each such call the stream must contain all
// preceding text.
#include "tests/text/write_support.h"

#include "qrv/text/write/cexacttext.h"

using namespace test;

namespace {

// Keys whose hooks read a stream. Their hashes begin at the hashes of the names that the writer
// searches, so that a search calls the hooks.
class cLookingKeys {
  public:
    static constexpr int count = 75;

    cLookingKeys() : type_(make<cTypeObj>("test_looks", set_up)) {}
    objref key(int number) const { return objref::adopt(new cObjD<int>(number, type_.get())); }

    // The contents of the stream at the calls, without repetitions, and the number of calls.
    std::string seen_while_writing(cObj const &value) {
        std::ostringstream os;
        seen_.clear();
        calls_ = 0;
        stream_ = &os;
        value.writeobj(os);
        stream_ = nullptr;
        return seen_ + std::to_string(calls_) + " calls";
    }

  private:
    static void look() {
        if (!stream_) return;
        ++calls_;
        std::string const text = stream_->str() + "|\n";
        if (!seen_.ends_with(text)) seen_ += text;
    }
    static unsigned hash(objref const &key) {
        static constexpr int half = count / 2;
        look();
        int const number = number_of(*key);
        char const *const name = number < half ? "//" : "wformat";
        return cat::type_string().hashfun(cat::of(name)) + static_cast<unsigned>(number % half);
    }
    static bool same(objref const &a, objref const &b) {
        look();
        return &a->type() == &b->type() && number_of(*a) == number_of(*b);
    }
    static void set_up(cTypeObj &type) {
        type.set_hash(hash, same);
        type.set_tmember("newobj", make<cExeMember>([](objref kind) {
                             look();
                             auto *const made = dynamic_cast<cTypeObj *>(kind.get());
                             return objref::adopt(new cObjD<int>(0, made));
                         }));
        type.set_tmember("assign", make<cExeMember>([](cObj &to, objref &from) {
                             look();
                             static_cast<cObjD<int> &>(to).val() = number_of(*from);
                             return true;
                         }));
    }

    static inline std::ostringstream const *stream_ = nullptr;
    static inline std::string seen_;
    static inline int calls_ = 0;
    typeref type_;
};

class WriterMembers : public QrvTest {
  protected:
    WriterMembers() : vector_(new_vector()), number_(cat::of(3)), map_(new_map("wc")) {
        append(vector_, cat::of(1));
        put(map_, "a", cat::of(0));
        put(map_, "b", vector_);
        put(map_, "c", number_);
    }
    void give_keys(cObj &value) {
        for (int i = 0; i < cLookingKeys::count; ++i) value.set_omember(keys_.key(i), cat::of(i));
    }
    std::string seen() { return keys_.seen_while_writing(*map_); }
    std::string seen_exactly() {
        cat::ExactText const exact;
        return seen();
    }

    cLookingKeys keys_;
    objref vector_, number_, map_;
};

// Removes the layout from the type of vectors and adds other members, until the end of the scope.
class cTypeMembers {
  public:
    cTypeMembers() { cat::type_vector().set_tmember("wformat", nullptr); }
    cTypeMembers(cTypeMembers const &) = delete;
    cTypeMembers &operator=(cTypeMembers const &) = delete;
    ~cTypeMembers() {
        for (objref const &key : keys_) cat::type_vector().set_tmember(key, nullptr);
        cat::type_vector().set_tmember("wformat", layout_);
    }
    void add(objref const &key) {
        cat::type_vector().set_tmember(key, cat::of(1));
        keys_.push_back(key);
    }

  private:
    objref layout_ = cat::type_vector().tmember("wformat");
    std::vector<objref> keys_;
};

} // namespace

TEST_F(WriterMembers, the_keys_may_be_in_a_container_on_one_line) {
    give_keys(*vector_);
    EXPECT_EQ(seen(), "{\n  a= 0;\n  b= |\n"
                      "{\n  a= 0;\n  b= [1, ];|\n"
                      "14 calls");
    EXPECT_EQ(seen_exactly(), "{\n  a= 0;\n  b= |\n"
                              "{\n  a= 0;\n  b= [|\n"
                              "{\n  a= 0;\n  b= [1, ];|\n"
                              "18 calls");
}

TEST_F(WriterMembers, the_keys_may_be_in_a_commented_container_on_many_lines) {
    give_keys(*vector_);
    vector_->set_omember("wformat", cat::of("wc"));
    vector_->set_comment("// in", true);
    std::string const expected = "{\n  a= 0;\n  b= |\n"
                                 "{\n  a= 0;\n  b= [|\n"
                                 "{\n  a= 0;\n  b= [// in\n      1,\n  ];|\n"
                                 "14 calls";
    EXPECT_EQ(seen(), expected);
    EXPECT_EQ(seen_exactly(), expected);
}

TEST_F(WriterMembers, the_keys_may_be_in_a_commented_scalar) {
    give_keys(*number_);
    number_->set_comment("// in", true);
    std::string const expected = "{\n  a= 0;\n  b= [1, ];\n  c= 3;|\n"
                                 "4 calls";
    EXPECT_EQ(seen(), expected);
    EXPECT_EQ(seen_exactly(), expected);
}

TEST_F(WriterMembers, the_keys_may_be_in_a_type) {
    cTypeMembers members;
    for (int i = 0; i < cLookingKeys::count; ++i) members.add(keys_.key(i));
    std::string const expected = "{\n  a= 0;\n  b= |\n"
                                 "{\n  a= 0;\n  b= [\n      1,\n  ];|\n"
                                 "6 calls";
    EXPECT_EQ(seen(), expected);
    EXPECT_EQ(seen_exactly(), expected);
}

TEST_F(WriterMembers, the_keys_may_be_in_the_global_members) {
    cTypeMembers const without_layout;
    for (int i = 0; i < cLookingKeys::count; ++i)
        cat::gmmap().datamap().mapitem(keys_.key(i), cat::of(i));
    std::string const expected = "{\n  a= 0;\n  b= |\n"
                                 "{\n  a= 0;\n  b= [\n      1,\n  ];|\n"
                                 "2 calls";
    EXPECT_EQ(seen(), expected);
    EXPECT_EQ(seen_exactly(), expected);
    for (int i = 0; i < cLookingKeys::count; ++i) // their type still exists here
        cat::gmmap().datamap().delitem(keys_.key(i));
}
