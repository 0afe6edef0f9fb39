// SPDX-License-Identifier: MIT
#include "channel/videoformats.h"

#include <QtGlobal>

namespace {

// The lowest byte of a code is the frame rate rounded down, the highest nibble 1 for interlaced and 2
// for progressive.
// clang-format off
const VideoFormat kFormats[] = {
    // text,                                                       code,       width,  height, exact rate
    {QT_TRANSLATE_NOOP("QCorvel", "1080i 59.94fps (1920)"),      0x1380b21d, "1920", "1080", "60000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080i 50fps (1920)"),         0x1380b219, "1920", "1080", "50"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 60fps (1920)"),         0x2380b23c, "1920", "1080", "60"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 59.94fps (1920)"),      0x2380b23b, "1920", "1080", "60000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 50fps (1920)"),         0x2380b232, "1920", "1080", "50"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 30fps (1920)"),         0x2380b21e, "1920", "1080", "30"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 29.97fps (1920)"),      0x2380b21d, "1920", "1080", "30000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 25fps (1920)"),         0x2380b219, "1920", "1080", "25"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 24fps (1920)"),         0x2380b218, "1920", "1080", "24"},
    {QT_TRANSLATE_NOOP("QCorvel", "1080P 23.98fps (1920)"),      0x2380b217, "1920", "1080", "24000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 23.98fps"), 0x2640f017, "3840", "2160", "24000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 24fps"),    0x2640f018, "3840", "2160", "24"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 25fps"),    0x2640f019, "3840", "2160", "25"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 29.97fps"), 0x2640f01d, "3840", "2160", "30000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 30fps"),    0x2640f01e, "3840", "2160", "30"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 50fps"),    0x2640f032, "3840", "2160", "50"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 59.94fps"), 0x2640f03b, "3840", "2160", "60000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "Quad HD 3840x2160 60fps"),    0x2640f03c, "3840", "2160", "60"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 23.98fps"),      0x26410017, "4096", "2160", "24000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 24fps"),         0x26410018, "4096", "2160", "24"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 25fps"),         0x26410019, "4096", "2160", "25"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 29.97fps"),      0x2641001d, "4096", "2160", "30000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 30fps"),         0x2641001e, "4096", "2160", "30"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 48fps"),         0x26410030, "4096", "2160", "48"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 50fps"),         0x26410032, "4096", "2160", "50"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 59.94fps"),      0x2641003b, "4096", "2160", "60000/1001"},
    {QT_TRANSLATE_NOOP("QCorvel", "4K 4096x2160 60fps"),         0x2641003c, "4096", "2160", "60"},
};
// clang-format on

} // namespace

TableView<VideoFormat> videoFormats()
{
    return {kFormats, sizeof kFormats / sizeof *kFormats};
}

const VideoFormat *findVideoFormat(quint32 id)
{
    for (const VideoFormat &format : kFormats) {
        if (format.id == id)
            return &format;
    }
    return nullptr;
}
