// SPDX-License-Identifier: MIT
//
// The line after a file command, from the counts alone.
#include "app/view/filenews.h"

#include <QtTest>

Q_DECLARE_METATYPE(FileNews::Counts)

using FileNews::Counts;

namespace {

Counts counts(int channels, int values)
{
    Counts made;
    made.channels = channels;
    made.values = values;
    return made;
}

} // namespace

class TestFileLines : public QObject {
    Q_OBJECT

private slots:
    void loaded_data();
    void loaded();
    void aDescriptionNamesItsChannel();
    void theOthers();
    void aLongNameIsCutInTheMiddle();
};

void TestFileLines::loaded_data()
{
    QTest::addColumn<Counts>("what");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const Counts &what, const char *line) {
        QTest::newRow(name) << what << QString::fromUtf8(line);
    };
    row("nothing", counts(0, 0), "Loaded x.ipp: 0 channels, 0 values");
    row("one", counts(1, 1), "Loaded x.ipp: 1 channel, 1 value");
    row("thousands", counts(12, 1160), "Loaded x.ipp: 12 channels, 1,160 values");
    Counts some = counts(2, 5);
    some.interfaces = 2;
    some.unknown = 1;
    row("left out", some, "Loaded x.ipp: 2 channels, 5 values, 3 left out: 2 interfaces, 1 unknown key");
    some.interfaces = 1;
    some.unknown = 0;
    some.beforeSections = 4;
    row("before", some,
        "Loaded x.ipp: 2 channels, 5 values, 5 left out: 1 interface, 4 before the first channel");
    Counts early = counts(2, 5);
    early.endsEarly = true;
    row("early", early, "Loaded x.ipp: 2 channels, 5 values; it ends at a channel below the first one");
}

void TestFileLines::loaded()
{
    QFETCH(Counts, what);
    QTEST(FileNews::loaded(QStringLiteral("/a/x.ipp"), what), "line");
}

void TestFileLines::aDescriptionNamesItsChannel()
{
    Counts what = counts(0, 7);
    what.locked = 1;
    QCOMPARE(FileNews::loadedDescription(QStringLiteral("/a/x.sdp"), 2, what),
             QStringLiteral("Loaded x.sdp into channel 2: 7 values, 1 left out: 1 locked"));
}

void TestFileLines::theOthers()
{
    const QString path = QStringLiteral("/a/x.ipp");
    const Counts what = counts(2, 5);
    QCOMPARE(FileNews::saved(path, what), QStringLiteral("Saved x.ipp: 2 channels, 5 values"));
    QCOMPARE(FileNews::notSaved(path, QStringLiteral("why")), QStringLiteral("x.ipp not saved: why"));
    QCOMPARE(FileNews::notLoaded(path, QStringLiteral("why")),
             QStringLiteral("Nothing loaded from x.ipp: why"));
    QCOMPARE(FileNews::loadTakenBack(path),
             QStringLiteral("Load of x.ipp cancelled: everything is as it was before"));
    QCOMPARE(FileNews::loadCutShort(path, what),
             QStringLiteral("Load of x.ipp cancelled: these stay loaded: 2 channels, 5 values"));
    QCOMPARE(FileNews::saveCutShort(path, what),
             QStringLiteral("Save of x.ipp cancelled: the file ends after 2 channels, 5 values"));
}

void TestFileLines::aLongNameIsCutInTheMiddle()
{
    const QString forty(40, QLatin1Char('a'));
    QCOMPARE(FileNews::nameOf(QLatin1Char('/') + forty), forty);
    const QString cut = FileNews::nameOf(QStringLiteral("/begin") + forty + QStringLiteral("end.ipp"));
    QCOMPARE(cut.size(), 40);
    QVERIFY(cut.startsWith(QStringLiteral("begin")));
    QVERIFY(cut.endsWith(QStringLiteral("end.ipp")));
    QVERIFY(cut.contains(QChar(0x2026)));
}

QTEST_GUILESS_MAIN(TestFileLines)
#include "test_filelines.moc"
