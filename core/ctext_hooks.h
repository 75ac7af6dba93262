#pragma once
// The functions of text/ that lower layers need: the text of an object, and the methods `write` and
// `read` of each kind of type. cat::install_text() (text/read/ctext_methods.h) fills the table in
// the bootstrap's first step, for the life of the process. Code in text/ and above calls the
// functions directly.

#include "qrv/core/cexe.h"

#include <iosfwd>
#include <string>

struct cTextMethods {
    cProcedure2 write;
    cProcedure2 read;
};

struct cTextHooks {
    // Until the table is filled, these three start the object core, which fills it.
    std::string (*as_text)(objref const &);         // cat::as_text
    std::string (*as_string)(objref const &);       // cat::as_string
    bool (*writeobj)(cObj const &, std::ostream &); // cObj::writeobj

    cTextMethods voiddata{}; // for types without a written form
    cTextMethods integer{}, float_number{}, double_number{}, string{}, boolean{};
    cTextMethods map{}, vector{}, set{};
    cTextMethods attspec{};
    cTextMethods attlist{}, attrset{};  // attribute types, and their objects
    cTextMethods choice{}, choiceval{}; // choice types, and their values
};

extern constinit cTextHooks text_hooks;
