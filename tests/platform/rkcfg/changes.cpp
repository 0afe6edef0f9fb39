// SPDX-License-Identifier: MIT
#include "changes.h"

namespace {

QString shown(int type, const char *text, uint32_t size, uint32_t number)
{
    if (type == 0)
        return QStringLiteral("-");
    if (type == 2)
        return QString::number(number);
    return QLatin1Char('\'') + QString::fromUtf8(text, static_cast<int>(size) - 1) + QLatin1Char('\'');
}

int collect(void *context, const RKCFG_CHANGE *change)
{
    *static_cast<QStringList *>(context) << line(*change);
    return 0;
}

} // namespace

QString line(const RKCFG_CHANGE &change)
{
    return QStringLiteral("%1|%2|%3>%4")
        .arg(QString::fromUtf8(change.keyPath), QString::fromUtf8(change.valueName),
             shown(change.oldType, change.oldText, change.oldSize, change.oldNumber),
             shown(change.newType, change.newText, change.newSize, change.newNumber));
}

QStringList changes(void *handle, int64_t after)
{
    QStringList lines;
    if (rkCFGHistory(handle, after, collect, &lines) != 0)
        return {QStringLiteral("failed")};
    return lines;
}

int64_t newestBatch(void *handle)
{
    int64_t batch = 0;
    const auto first = [](void *context, const RKCFG_CHANGE *change) {
        *static_cast<int64_t *>(context) = change->batch;
        return 1;
    };
    return rkCFGHistory(handle, -1, first, &batch) == 0 ? batch : -1;
}

QStringList values(void *handle)
{
    QStringList lines;
    const auto add = [](void *context, const char *path, const char *name, const char *text, uint32_t size,
                        uint32_t number) {
        *static_cast<QStringList *>(context) << QStringLiteral("%1|%2|%3")
                                                    .arg(QString::fromUtf8(path), QString::fromUtf8(name),
                                                         shown(text ? 1 : 2, text, size, number));
        return 0;
    };
    if (rkCFGForEach(handle, nullptr, add, &lines) != 0)
        return {QStringLiteral("failed")};
    return lines;
}

TakenBack takeBack(int64_t batch, bool force, bool dryRun)
{
    TakenBack result{-2, -1, {}};
    result.conflicts = rkCFGTakeBack(store, batch, force, dryRun, collect, &result.lines, &result.batch);
    return result;
}
