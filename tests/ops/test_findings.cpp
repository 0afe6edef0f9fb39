// SPDX-License-Identifier: MIT
#include "ops/findings.h"

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
    QVERIFY(!ops::hasTrouble({}));
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
