#pragma once
// The indent of the writer. The settings are process-wide.

#include "qrv/qrvdefs.h"

namespace cat {

// The columns of each nested level, and of the outermost one; initially 4 and 2.
extern QRV_API int write_indent;
extern QRV_API int write_indent0;

// Adds columns to the current level during its lifetime.
class QRV_API DoWriteIndent {
  public:
    explicit DoWriteIndent(int columns = 4);
    DoWriteIndent(DoWriteIndent const &) = delete; // would subtract the columns twice
    // Copies only the number: the destructor then subtracts that many columns.
    DoWriteIndent &operator=(DoWriteIndent const &other) noexcept;
    ~DoWriteIndent();

  private:
    int columns_;
};

} // namespace cat
