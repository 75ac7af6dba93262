#pragma once
// The comments that an entry has in the new text: its own, and those that it gets from entries of a
// donor.

#include "edit/cpage.h"
#include "edit/cplan.h"

#include <string>
#include <vector>

namespace qrv::edit {

class Comments {
  public:
    using Where = cat::SourceComment::Where;

    Comments(Page const &page, Entries const &entries) : page_(page), entries_(entries) {}

    // Above an item that is written anew, or after it, with what separates them from it.
    std::string of(Item const &item, Where where, std::string const &indent) const;
    // The same for one entry of the text.
    std::string at(size_t number, Where where, std::string const &indent) const;
    // The comments of the section that an entry of a donor begins: whole lines between it and the
    // one before, with the empty lines around them. Not the header of its text.
    std::string section_above(Item const &item, std::string const &indent) const;
    // Between the value and its delimiter, with the blanks around them.
    std::string before_delimiter(Item const &item) const;
    // Around the "=" of an entry that comes into a list, with the blanks after them.
    std::string at_separator(Item const &item, std::string const &indent) const;
    // The donor's entries whose comments an item gets besides its own.
    std::vector<size_t> lenders(Item const &item) const;
    // A text from an entry of a donor gets the line ends of the page.
    std::string brought(size_t number, std::string text) const;

  private:
    Page const &page_;
    Entries const &entries_;
};

} // namespace qrv::edit
