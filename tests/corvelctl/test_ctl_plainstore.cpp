// SPDX-License-Identifier: MIT
// With a site's own configuration library, which has the original calls only: what can be done is done, and
// what cannot says why.
#include "ctlhome.h"

class TestCtlPlainStore : public QObject {
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
};

void TestCtlPlainStore::answers_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    const auto row = [](const char *words, int code, const char *out, const char *err) {
        QTest::newRow(words) << QByteArray(words) << code << QByteArray(out) << QByteArray(err);
    };
    row("get server channels", 0, "3\n", "");
    row("list", 0, "KWX\\Config\tMaxIntChannels\t3\n", "");
    row("show server -q", 0,
        "channels       3\nnmos.override  -\nnmos.log       -\nnmos.kept      -\nnmos.domain    -\n"
        "nmos.ip        -\nnmos.server    -\nnmos.port      -\n",
        "");
    row("config list", 0, "* default\n", "");
    row("config use default", 0, "", "");
    row("diff 0 1", 0, "", "");
    row("set 0 domain=1", 0, "0 domain: (absent) -> 1\n",
        "number KWX\\Internal0\\IpConfig ClockDomain 1\ncorvelctl: 1 value changed\n");
    row("set 0 gm=AC-DE-48-23-45-67 -q", 0, "0 gm: (absent) -> AC-DE-48-23-45-67\n",
        "text KWX\\Internal0\\IpConfig ClockGrandMaster AC-DE-48-23-45-67\n");
    row("set 0/video rx.dst=239.1.1.1:5004", 3, "",
        "corvelctl: this configuration library cannot store several values as one; nothing was changed\n");
    row("set 0/video rx.dst=239.1.1.1:5004 -n -q", 0,
        "0/video rx.dst: (absent) -> 239.1.1.1\n0/video rx.dst-port: (absent) -> 5004\n", "");
    row("flows 0 --from 239.1.1.1:5004", 3, "",
        "corvelctl: this configuration library cannot store several values as one; nothing was changed\n");
    row("unset server channels", 3, "",
        "corvelctl: the store did not take KWX\\Config MaxIntChannels; nothing was changed\n");
    row("history", 3, "", "corvelctl: this configuration library keeps no history\n");
    row("blame 0/domain", 3, "", "corvelctl: this configuration library keeps no history\n");
    row("undo", 3, "", "corvelctl: this configuration library keeps no history\n");
    row("redo", 3, "", "corvelctl: this configuration library keeps no history\n");
    row("watch", 3, "", "corvelctl: this configuration library cannot be watched\n");
    row("config new night", 3, "",
        "corvelctl: this configuration library opens the default configuration only\n");
    row("config copy default night", 3, "",
        "corvelctl: this configuration library opens the default configuration only\n");
    row("-c night show", 2, "", "corvelctl: there is no configuration \"night\"\n");
}

void TestCtlPlainStore::answers()
{
    QFETCH(QByteArray, words);
    QFETCH(int, code);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    const CtlHome home;
    qputenv("LD_LIBRARY_PATH", PLAIN_STORE_DIR);
    const CtlResult result = home.run(words.constData());
    qunsetenv("LD_LIBRARY_PATH");
    QCOMPARE(result.err, err);
    QCOMPARE(result.out, out);
    QCOMPARE(result.code, code);
}

QTEST_GUILESS_MAIN(TestCtlPlainStore)
#include "test_ctl_plainstore.moc"
