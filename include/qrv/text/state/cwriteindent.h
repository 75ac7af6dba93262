#pragma once
// How far the writer indents. The settings are process-wide.

#include "qrv/qrvdefs.h"

namespace cat {

// Columns for each level below the outermost, and columns of the outermost one.
extern QRV_API int write_indent;  // 4
extern QRV_API int write_indent0; // 2

// More columns for the current level as long as it lives.
class QRV_API DoWriteIndent {
  public:
    explicit DoWriteIndent(int columns = 4);
    DoWriteIndent(DoWriteIndent const &) = delete; // would take the columns back twice
    // Takes over the number only: the destructor then takes back that many.
    DoWriteIndent &operator=(DoWriteIndent const &other) noexcept;
    ~DoWriteIndent();

  private:
    int columns_;
};

} // namespace cat
