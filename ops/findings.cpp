// SPDX-License-Identifier: MIT
#include "ops/findings.h"

#include "ops/printable.h"

#include <QByteArrayList>
#include <QString>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cstring>

namespace ops {

namespace {

bool isTrouble(const Finding &finding)
{
    return finding.severity != Severity::Note;
}

QByteArray line(const Finding &finding)
{
    QByteArray text = printable(finding.place) + ": " + severityName(finding.severity) + ": " +
                      printable(finding.reason) + " [" + finding.rule;
    if (*finding.clause)
        text += QByteArray(", ") + finding.clause;
    return text + "]\n";
}

// Line by line: no other control character may stand in XML.
QString xmlText(const QByteArray &bytes)
{
    QByteArrayList lines;
    for (const QByteArray &one : bytes.split('\n'))
        lines.append(printable(one));
    return QString::fromUtf8(lines.join('\n'));
}

Findings ofRule(const Findings &findings, const char *rule)
{
    Findings found;
    for (const Finding &finding : findings) {
        if (std::strcmp(finding.rule, rule) == 0)
            found.push_back(finding);
    }
    return found;
}

void writeCase(QXmlStreamWriter &xml, const char *suite, const char *rule, const Findings &findings)
{
    xml.writeStartElement(QStringLiteral("testcase"));
    xml.writeAttribute(QStringLiteral("classname"), QString::fromLatin1(suite));
    xml.writeAttribute(QStringLiteral("name"), QString::fromLatin1(rule));
    if (!findings.empty()) {
        const bool failed = hasTrouble(findings);
        xml.writeStartElement(failed ? QStringLiteral("failure") : QStringLiteral("system-out"));
        if (failed)
            xml.writeAttribute(QStringLiteral("message"),
                               QString::fromUtf8(printable(findings.front().reason)));
        xml.writeCharacters(xmlText(findingsText(findings)));
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

} // namespace

const char *severityName(Severity severity)
{
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Note:
        break;
    }
    return "note";
}

bool hasTrouble(const Findings &findings)
{
    return std::any_of(findings.begin(), findings.end(), isTrouble);
}

QByteArray findingsText(const Findings &findings)
{
    QByteArray text;
    for (const Finding &finding : findings) {
        text += line(finding);
        if (!finding.remedy.isEmpty())
            text += "    " + printable(finding.remedy) + '\n';
    }
    return text;
}

QByteArray findingsJunit(const Findings &findings, const char *suite, const std::vector<const char *> &rules)
{
    const auto fails = [&](const char *rule) { return hasTrouble(ofRule(findings, rule)); };
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), QString::fromLatin1(suite));
    xml.writeAttribute(QStringLiteral("tests"), QString::number(rules.size()));
    xml.writeAttribute(QStringLiteral("failures"),
                       QString::number(std::count_if(rules.begin(), rules.end(), fails)));
    for (const char *rule : rules)
        writeCase(xml, suite, rule, ofRule(findings, rule));
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}

} // namespace ops
