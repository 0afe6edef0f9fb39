// SPDX-License-Identifier: MIT
#include "ops/findings.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>
#include <QtTest>

using ops::Finding;
using ops::Findings;
using ops::Severity;

namespace {

Findings sample()
{
    return {{Severity::Error, "ttl", "a.sdp:7", "a group without a time to live", "write \"/64\"",
             "RFC 4566 5.7"},
            {Severity::Warning, "port-odd", "a.sdp:6", "port 5005 is odd", "", ""},
            {Severity::Note, "ttl", "b.sdp:7", "worth knowing", "", ""}};
}

} // namespace

class TestFindings : public QObject {
    Q_OBJECT

private slots:
    void linesForPeople();
    void nothingFoundIsNothingSaid();
    void notesAreNoTrouble();
    void controlBytesDoNotReachTheTerminal();
    void json();
    void jsonLines();
    void anyBytesAreJson();
    void junit();
};

void TestFindings::linesForPeople()
{
    QCOMPARE(ops::findingsText(sample()),
             QByteArray("a.sdp:7: error: a group without a time to live [ttl, RFC 4566 5.7]\n"
                        "    write \"/64\"\n"
                        "a.sdp:6: warning: port 5005 is odd [port-odd]\n"
                        "b.sdp:7: note: worth knowing [ttl]\n"));
}

void TestFindings::nothingFoundIsNothingSaid()
{
    QCOMPARE(ops::findingsText({}), QByteArray());
    QCOMPARE(ops::findingsLines({}), QByteArray());
    QVERIFY(!ops::hasTrouble({}));
    QCOMPARE(QJsonDocument::fromJson(ops::findingsJson({}))
                 .object()
                 .value(QStringLiteral("findings"))
                 .toArray()
                 .size(),
             0);
}

void TestFindings::notesAreNoTrouble()
{
    QVERIFY(!ops::hasTrouble({sample()[2]}));
    QVERIFY(ops::hasTrouble({sample()[2], sample()[1]}));
    QVERIFY(ops::hasTrouble({sample()[0]}));
}

void TestFindings::controlBytesDoNotReachTheTerminal()
{
    const Findings findings = {{Severity::Error, "x", "a\x1b[2J.sdp", "b\r\x7f", "c\x01", ""}};
    QCOMPARE(ops::findingsText(findings), QByteArray("a\\x1b[2J.sdp: error: b\\x0d\\x7f [x]\n    c\\x01\n"));
}

void TestFindings::json()
{
    const QJsonObject all = QJsonDocument::fromJson(ops::findingsJson(sample())).object();
    QCOMPARE(all.value(QStringLiteral("schema")).toInt(), 1);
    const QJsonObject first = all.value(QStringLiteral("findings")).toArray().at(0).toObject();
    QCOMPARE(first.keys(),
             QStringList({QStringLiteral("clause"), QStringLiteral("place"), QStringLiteral("reason"),
                          QStringLiteral("remedy"), QStringLiteral("rule"), QStringLiteral("severity")}));
    QCOMPARE(first.value(QStringLiteral("severity")).toString(), QStringLiteral("error"));
    QCOMPARE(first.value(QStringLiteral("place")).toString(), QStringLiteral("a.sdp:7"));
    QCOMPARE(first.value(QStringLiteral("clause")).toString(), QStringLiteral("RFC 4566 5.7"));
}

void TestFindings::jsonLines()
{
    const QList<QByteArray> lines = ops::findingsLines(sample()).split('\n');
    QCOMPARE(lines.size(), 4); // the last one is empty
    for (int line = 0; line < 3; ++line)
        QVERIFY(QJsonDocument::fromJson(lines[line]).isObject());
}

void TestFindings::anyBytesAreJson()
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += char(byte);
    const QByteArray line = ops::findingsLines({{Severity::Error, "x", bytes, bytes, bytes, ""}});
    QVERIFY(QJsonDocument::fromJson(line).isObject());
    QCOMPARE(line.count('\n'), 1);
}

void TestFindings::junit()
{
    const QByteArray text = ops::findingsJunit(sample(), "sdp check", {"ttl", "port-odd", "protocol"});
    QXmlStreamReader xml(text);
    QVERIFY(xml.readNextStartElement());
    QCOMPARE(xml.attributes().value(QLatin1String("tests")).toString(), QStringLiteral("3"));
    QCOMPARE(xml.attributes().value(QLatin1String("failures")).toString(), QStringLiteral("2"));
    QStringList cases;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement)
            cases << xml.name().toString() + QLatin1Char(' ') +
                         xml.attributes().value(QLatin1String("name")).toString();
    }
    QVERIFY(!xml.hasError());
    QCOMPARE(cases, QStringList({QStringLiteral("testcase ttl"), QStringLiteral("failure "),
                                 QStringLiteral("testcase port-odd"), QStringLiteral("failure "),
                                 QStringLiteral("testcase protocol")}));
    const Findings odd = {{Severity::Error, "ttl", "a\x1b<&>", "\x01", "", ""}};
    QXmlStreamReader oddXml(ops::findingsJunit(odd, "x", {"ttl"}));
    while (!oddXml.atEnd())
        oddXml.readNext();
    QVERIFY(!oddXml.hasError());
}

QTEST_GUILESS_MAIN(TestFindings)
#include "test_findings.moc"
