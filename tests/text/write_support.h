#pragma once
// Trees created by a program, their text, and types with their own `write`.

#include "tests/support/fixture.h"

#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "text/write/cscalar_text.h"

#include <locale>
#include <sstream>
#include <string>

namespace test {

inline std::string written(cObj const &obj) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    obj.writeobj(os);
    return os.str();
}
inline std::string written(objref const &ref) { return written(*ref); }

inline cMapObj &map_of(objref const &ref) { return static_cast<cMapObj &>(*ref); }

template <class T> objref container(char const *layout = nullptr) {
    objref const made = objref::adopt(new T);
    if (layout) made->set_omember("wformat", cat::of(layout));
    return made;
}
inline objref new_map(char const *layout = nullptr) { return container<cMapObj>(layout); }
inline objref new_vector(char const *layout = nullptr) { return container<cVectorObj>(layout); }
inline objref new_set(char const *layout = nullptr) { return container<cSetObj>(layout); }

inline void put(objref const &map, std::string const &key, objref const &value) {
    ASSERT_TRUE(map_of(map).datamap().mapitem(key, value));
}
inline void put(objref const &map, objref const &key, objref const &value) {
    ASSERT_TRUE(map_of(map).datamap().mapitem(key, value));
}
inline void append(objref const &vector, objref const &value) {
    ASSERT_TRUE(map_of(vector).datamap().vect_append(value));
}

// Reads one value with its comments; expects no error.
inline objref read_back(std::string const &text) {
    std::istringstream is(text);
    objref result;
    cAttrScan scan(is, false);
    scan.return_com(true, nullptr);
    EXPECT_EQ(scan.scan_obj(result, nullptr), 0) << text;
    EXPECT_EQ(scan.errcount(), 0u) << text;
    return result;
}

// A type of the given name whose objects are written by a function of the test.
class cForeignType {
  public:
    using method = bool (*)(cObj &, objref &);
    cForeignType(char const *name, method write) : type_(make<cTypeObj>(name)) {
        type_->set_tmember("write", make<cExeMember>(write));
    }
    cTypeObj &type() const { return *type_; }
    // An object of it that contains a number.
    objref of(int number) const { return objref::adopt(new cObjD<int>(number, type_.get())); }

  private:
    typeref type_;
};

inline std::ostream &stream_of(objref const &args) {
    return static_cast<cOutHolder &>(*args).val();
}
inline int number_of(cObj const &obj) { return static_cast<cObjD<int> const &>(obj).val(); }

} // namespace test
