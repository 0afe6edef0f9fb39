// SPDX-License-Identifier: MIT
// Any text that a store may hold, shown in every field of the page for every element. What the page then has
// is taken by it once more without a change.
#include "app/view/page.h"
#include "require.h"

#include <QApplication>

namespace {

const Field fields[] = {
    Field::Flags,      Field::Channels,      Field::PacketTime,         Field::TotalChannels,
    Field::SourcePort, Field::SourceAddress, Field::DestinationAddress, Field::DestinationPort,
    Field::Interface};

void showTwice(ChannelView &view, Side side, Field field, const QString &text)
{
    view.show(side, field, text);
    const QString once = view.value(side, field);
    view.show(side, field, once);
    require(view.value(side, field) == once, "the second showing changes the value");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int count = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static const bool offscreen = qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(count, arguments);
    static Page page;
    static ChannelView view = page.view();
    require(offscreen, "no platform");
    if (size < 1)
        return 0;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data) + 1, int(size) - 1);
    view.go({data[0] % 3, data[0] / 3 % 3, Element(data[0] / 9 % 3), data[0] % 8u});
    require(view.isVideo() + view.isAudio() + view.isAnc() == 1, "element");
    for (const Side side : {Side::Receive, Side::Send})
        for (const Field field : fields)
            showTwice(view, side, field, text);
    return 0;
}
