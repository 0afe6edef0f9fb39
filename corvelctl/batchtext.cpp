// SPDX-License-Identifier: MIT
#include "corvelctl/batchtext.h"

#include "corvelctl/changes.h"

namespace {

constexpr std::size_t kShownChanges = 8;

} // namespace

QByteArray batchTitle(const ops::Batch &batch)
{
    const QByteArray time = ops::isoTime(batch.timeUs);
    QByteArray title = '#' + QByteArray::number(batch.id) + ' ' + time.left(10) + ' ' + time.mid(11, 8) +
                       ' ' + batch.program + " (" + batch.user + ')';
    if (!batch.label.isEmpty())
        title += ": " + batch.label;
    return batch.takenBack ? title + " [taken back]" : title;
}

Json batchItem(const ops::Batch &batch)
{
    return {{"batch", batch.id},
            {"time", ops::isoTime(batch.timeUs).toStdString()},
            {"program", jsonText(batch.program)},
            {"pid", batch.pid},
            {"user", jsonText(batch.user)},
            {"label", batch.label.isEmpty() ? Json(nullptr) : jsonText(batch.label)},
            {"undoes", batch.undoes == 0 ? Json(nullptr) : Json(batch.undoes)},
            {"taken_back", batch.takenBack}};
}

void printBatch(Output &out, const ops::Batch &batch, bool allChanges)
{
    out.item([&batch] {
        Json item = batchItem(batch);
        item["changes"] = Json::array();
        for (const ops::Change &change : batch.changes)
            item["changes"].push_back(changeItem(change));
        return item;
    });
    if (!out.isText())
        return;
    out.line(out.coloured(printable(batchTitle(batch)), Output::Colour::Head));
    std::size_t shown = 0;
    for (const ops::Change &change : batch.changes) {
        if (shown++ == kShownChanges && !allChanges)
            break;
        out.line("    " + changeText(out, change));
    }
    if (!allChanges && batch.changes.size() > kShownChanges)
        out.line("    and " + counted(batch.changes.size() - kShownChanges, "more change"));
}
