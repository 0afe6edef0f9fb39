// SPDX-License-Identifier: MIT
#include "fleet/service/marks.h"

#include "fleet/keypath.h"
#include "fleet/storenotes.h"
#include "ops/configurations.h"

#include <QList>

namespace fleet {

std::optional<KeptAs> keptAs(const QByteArray &configuration)
{
    if (!ops::hasConfiguration(configuration))
        return std::nullopt;
    const auto store = ops::Store::open(configuration);
    if (!store)
        return std::nullopt;
    // "ROLE /corvel/v1/SITE/servers/SERVER/CONFIGURATION/"
    const QByteArray mark = QByteArray::fromStdString(StoreNotes(*store).mark().place);
    const QList<QByteArray> parts = mark.split('/');
    if (parts.size() < 7)
        return std::nullopt;
    KeptAs kept;
    kept.desk = mark.startsWith("desk ");
    kept.server = nameOfPart(parts.at(5).toStdString()).value_or(QByteArray());
    kept.configuration = nameOfPart(parts.at(6).toStdString()).value_or(QByteArray());
    return kept;
}

QByteArray keptConfigurationOf(const QByteArray &server)
{
    const std::optional<KeptAs> kept = keptAs(server);
    return kept && kept->desk && kept->server == server ? kept->configuration : QByteArray();
}

bool isOwn(const QByteArray &configuration)
{
    if (!ops::hasConfiguration(configuration) || keptAs(configuration))
        return false;
    const auto store = ops::Store::open(configuration);
    if (!store)
        return true;
    const auto values = store->read();
    return !values || !values->empty();
}

} // namespace fleet
