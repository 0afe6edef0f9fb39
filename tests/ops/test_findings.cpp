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
    void junitOfAnyBytes_data();
    void junitOfAnyBytes();
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
}

void TestFindings::junitOfAnyBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("shown");
    const auto row = [](const char *name, const QByteArray &bytes, const char *shown) {
        QTest::newRow(name) << bytes << QByteArray(shown);
    };
    row("plain", "abc", "abc");
    row("marks of XML", "a<b>&\"'c", "a<b>&\"'c");
    row("the end of a section", "]]>", "]]>");
    row("an entity", "&lt;&#0;", "&lt;&#0;");
    row("letters beyond ASCII",
        "Stra\xc3\x9f"
        "e",
        "Stra\xc3\x9f"
        "e");
    row("latin-1",
        "Stra\xdf"
        "e",
        "Stra\\xdfe");
    row("escape", "\x1b[2J", "\\x1b[2J");
    row("zero", QByteArray("a\0b", 3), "a\\x00b");
    row("line end", "a\nb", "a\\x0ab");
    row("every control character", "\x01\x02\x08\x0b\x0c\x0e\x1f\x7f",
        "\\x01\\x02\\x08\\x0b\\x0c\\x0e\\x1f\\x7f");
}

// Whatever stands in a file or the store: the report can be read, and the text says what lines for people
// say.
void TestFindings::junitOfAnyBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, shown);
    const Findings findings = {{Severity::Error, "ttl", bytes, bytes, bytes, ""}};
    QXmlStreamReader xml(ops::findingsJunit(findings, "x", {"ttl"}));
    QString text, message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.name() == QLatin1String("failure") && xml.isStartElement())
            message = xml.attributes().value(QLatin1String("message")).toString();
        if (xml.isCharacters() && !xml.isWhitespace())
            text += xml.text();
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    QCOMPARE(message.toUtf8(), shown);
    QCOMPARE(text.toUtf8(), ops::findingsText(findings));
    QVERIFY(text.toUtf8().startsWith(shown + ": error: " + shown + " [ttl]\n    " + shown));
}

QTEST_GUILESS_MAIN(TestFindings)
#include "test_findings.moc"
