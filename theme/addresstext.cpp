// SPDX-License-Identifier: MIT
#include "theme/addresstext.h"

#include <QRegularExpression>

namespace {

// clang-format off
const char kAddressPattern[] =
    R"(^[\s"'`“”„‘’«»]*)"                                        // blanks and quotes
    R"((?:(?:udp|rtp)://)?)"
    R"((?<address>(?:OCTET\.){3}OCTET))"
    R"((?::(?<port>[0-9]{1,5}))?)"
    R"((?:/(?:[0-9]|[12][0-9]|3[0-2]))?)"                         // a prefix length
    R"([\s"'`“”„‘’«»]*$)";
// clang-format on
const char kOctetPattern[] = "(?:25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])";

QRegularExpression addressRule()
{
    QString pattern = QString::fromUtf8(kAddressPattern);
    pattern.replace(QLatin1String("OCTET"), QLatin1String(kOctetPattern));
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption |
                                           QRegularExpression::UseUnicodePropertiesOption);
}

} // namespace

QString addressInText(const QString &text)
{
    static const QRegularExpression rule = addressRule();
    const QRegularExpressionMatch match = rule.match(text);
    if (!match.hasMatch() || match.captured(QStringLiteral("port")).toUInt() > 65535)
        return QString();
    return match.captured(QStringLiteral("address"));
}
