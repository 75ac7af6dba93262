#pragma once
// Finds the comments of an entry in the new text: its own, and those that it gets from entries of
// the donor.

#include "edit/cpage.h"
#include "edit/cplan.h"

#include <string>
#include <vector>

namespace qrv::edit {

class Comments {
  public:
    using Where = cat::SourceComment::Where;

    Comments(Page const &page, Entries const &entries) : page_(page), entries_(entries) {}

    // The comments above (or after) an item that is written anew, with the blanks and line ends
    // between them and the item.
    std::string of(Item const &item, Where where, std::string const &indent) const;
    // The same for one entry of the text.
    std::string at(size_t number, Where where, std::string const &indent) const;
    // For an entry of the donor that begins a section, the comments of the section: the whole lines
    // between this entry and the one before, with the empty lines around them. Does not return the
    // header of the donor.
    std::string section_above(Item const &item, std::string const &indent) const;
    // The comments between the value and its delimiter, with the blanks around them.
    std::string before_delimiter(Item const &item) const;
    // The comments around the "=" of an entry that is inserted into a list, with the blanks after
    // them.
    std::string at_separator(Item const &item, std::string const &indent) const;
    // The donor's entries whose comments an item gets in addition to its own.
    std::vector<size_t> lenders(Item const &item) const;
    // Returns the text of an entry; if it comes from the donor, with the line ends of the page.
    std::string brought(size_t number, std::string text) const;

  private:
    Page const &page_;
    Entries const &entries_;
};

} // namespace qrv::edit
