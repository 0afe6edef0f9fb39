// SPDX-License-Identifier: MIT
#include "channel/interfacecheck.h"

#include "channel/elementvalues.h"
#include "rkos.h"

#include <QElapsedTimer>
#include <QHash>

bool interfaceExists(const QString &address)
{
    return rkOSIPExists(address.toUtf8().constData()) != 0;
}

bool interfaceExistedLately(const QString &address)
{
    constexpr int kFreshMs = 1000;
    static QHash<QString, bool> answers;
    static QElapsedTimer age;
    if (!age.isValid() || age.hasExpired(kFreshMs)) {
        answers.clear();
        age.start();
    }
    const auto known = answers.constFind(address);
    if (known != answers.constEnd())
        return *known;
    return answers[address] = interfaceExists(address);
}

const char *interfaceLabel(Element element)
{
    switch (element) {
    case Element::Video:
        return QT_TRANSLATE_NOOP("QCorvel", "Video IP ");
    case Element::Audio:
        return QT_TRANSLATE_NOOP("QCorvel", "Audio IP ");
    case Element::Anc:
        return QT_TRANSLATE_NOOP("QCorvel", "Anc IP ");
    }
    Q_UNREACHABLE();
}

QList<MissingInterface> missingInterfaces(int channel)
{
    QList<MissingInterface> missing;
    for (const Element element : elementOrder()) {
        for (const Side side : sideOrder()) {
            const QString address = elementValue(element, side, Field::Interface, channel);
            if (!interfaceExists(address))
                missing.append({element, side, address});
        }
    }
    return missing;
}
