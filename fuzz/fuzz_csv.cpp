// SPDX-License-Identifier: MIT
// The reader of tables. Written again and read again, the cells have to be the same, and what is
// guarded against a spreadsheet is the same without its guard.
#include "ops/csv.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const auto rows = ops::readCsv(text);
    if (!rows)
        return 0;
    // A first line with more commas than anything else, so that the comma is the separator again.
    QByteArray again = QByteArray(1000, ',') + "x\r\n";
    for (const ops::CsvRow &row : *rows)
        again += ops::csvLine(row.cells);
    const auto reread = ops::readCsv(again);
    if (!reread || reread->size() != rows->size() + 1)
        abort();
    for (std::size_t at = 0; at < rows->size(); ++at) {
        if ((*reread)[at + 1].cells != (*rows)[at].cells)
            abort();
        for (const QByteArray &cell : (*rows)[at].cells) {
            if (ops::plainCell(ops::safeCell(cell)) != cell)
                abort();
        }
    }
    return 0;
}
