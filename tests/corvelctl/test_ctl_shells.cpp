// SPDX-License-Identifier: MIT
// The completion in the shells themselves, on a terminal: what is typed, the tab key, and the words that the
// command then gets. The shells that are not installed have no rows.
#include "ctlhome.h"
#include "terminal.h"

#include <QStandardPaths>

class TestCtlShells : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void completes_data();
    void completes();

private:
    CtlHome m_home;
};

namespace {

// The command itself is not run: a function of its name shows the words that it got. The prompt is spelled so
// that the line that sets it does not hold it.
const struct {
    const char *name;
    QByteArrayList arguments;
    const char *setUp; // %1: the folder of the scripts
} kShells[] = {
    {"bash",
     {"--norc", "--noprofile", "-i"},
     "corvelctl() { case $1 in __complete*) command corvelctl \"$@\";; *) printf '<%s>' \"$@\"; echo '|end'; "
     "esac; }; "
     "source %1/corvelctl.bash; PS1='PRO''MPT_'"},
    {"zsh",
     {"-f", "-i"},
     "corvelctl() { case $1 in __complete*) command corvelctl \"$@\";; *) printf '<%s>' \"$@\"; echo '|end'; "
     "esac; }; "
     "fpath=(%1 $fpath); autoload -Uz compinit; compinit -u -D; setopt no_beep; PS1='PRO''MPT_'"},
    {"fish",
     {"--no-config", "-i"},
     "function corvelctl; if string match -q '__complete*' -- $argv[1]; command corvelctl $argv; else; "
     "printf '<%s>' $argv; echo '|end'; end; end; source %1/corvelctl.fish; "
     "function fish_prompt; echo -n PRO''MPT_; end"},
};

struct Typed {
    const char *keys;  // "\t" behind them
    const char *words; // as the command gets them
};

// clang-format off
const Typed kTyped[] = {
    {"sho",                             "<show>"},
    {"config ren",                      "<config><rename>"},
    {"show 1/v",                        "<show><1/video>"},
    {"show 1/audio/3",                  "<show><1/audio/3>"},
    {"get 0/video rx.dst-",             "<get><0/video><rx.dst-port>"},
    {"get 0/video ReceiveDestinationI", "<get><0/video><ReceiveDestinationIp>"},
    {"set 0/video rx.dst-",             "<set><0/video><rx.dst-port=>"},
    {"set 0 clock=s",                   "<set><0><clock=sw-ptp>"},
    {"set 0 format=3840x2160p59",       "<set><0><format=3840x2160p59.94>"},
    {"set 0/video rx.use=dst,i",        "<set><0/video><rx.use=dst,if>"},
    {"set 0/video rx.if=127.",          "<set><0/video><rx.if=127.0.0.1>"},
    {"set '*/video' rx.dst-",           "<set><*/video><rx.dst-port=>"},
    {"blame 0/video/rx.dst-",           "<blame><0/video/rx.dst-port>"},
    {"-c la",                           "<-c><late night>"},
    {"--config=la",                     "<--config=late night>"},
    {"config use la",                   "<config><use><late night>"},
    {"config use 'la",                  "<config><use><late night>"},
    {"config use \"la",                 "<config><use><late night>"},
    {"config use it",                   "<config><use><it's>"},
    {"diff config:la",                  "<diff><config:late night>"},
    {"diff st",                         "<diff><store>"},
    {"restore site",                    "<restore><site one.json>"},
    {"sdp fix a.sdp -o site",           "<sdp><fix><a.sdp><-o><site one.json>"},
    {"config use site",                 "<config><use><site>"},
    {"flows 0 --side b",                "<flows><0><--side><both>"},
    {"flows 0 --side=b",                "<flows><0><--side=both>"},
    {"undo --sin",                      "<undo><--since>"},
    {"list 'KWX\\C",                    "<list><KWX\\Config>"},
    {"zebra ",                          "<zebra>"},
};
// clang-format on

} // namespace

void TestCtlShells::initTestCase()
{
    QCOMPARE(m_home.run("set server channels=2").code, 0);
    QCOMPARE(m_home.run("config new", {QStringLiteral("late night")}).code, 0);
    QCOMPARE(m_home.run("config new", {QStringLiteral("it's")}).code, 0);
    m_home.write("site one.json", "{}");
}

void TestCtlShells::completes_data()
{
    QTest::addColumn<int>("shell");
    int shell = 0;
    for (const auto &row : kShells) {
        if (!QStandardPaths::findExecutable(QLatin1String(row.name)).isEmpty())
            QTest::newRow(row.name) << shell;
        ++shell;
    }
}

// One line after the other in one shell, each when its prompt is there: before, the keys would not be its
// own.
void TestCtlShells::completes()
{
    QFETCH(int, shell);
    const auto &row = kShells[shell];
    const QByteArray home = m_home.path("").toUtf8();
    const QByteArray program = QStandardPaths::findExecutable(QLatin1String(row.name)).toUtf8();
    Terminal terminal(QByteArrayList{program} + row.arguments,
                      {"XDG_CONFIG_HOME=" + home, "HOME=" + home, "TERM=xterm", "LC_ALL=C.UTF-8",
                       "PATH=" CORVEL_BIN_DIR ":" + qgetenv("PATH")});
    terminal.type("cd " + home + "; " + QByteArray(row.setUp).replace("%1", CORVELCTL_COMPLETION) + '\r');
    for (const Typed &typed : kTyped) {
        QVERIFY2(terminal.readUntil("PROMPT_").contains("PROMPT_"), terminal.shown().constData());
        terminal.forget();
        terminal.type(QByteArray("corvelctl ") + typed.keys + "\t\r");
        const QByteArray wanted = typed.words + QByteArray("|end");
        const QByteArray shown = terminal.readUntil("|end");
        const int at = shown.indexOf(wanted);
        const QByteArray said = typed.keys + QByteArray(": ") + shown;
        QVERIFY2(at >= 0 && shown.indexOf('<') == at, said.constData());
    }
    terminal.readUntil("PROMPT_");
    terminal.type("exit\r");
    terminal.end();
}

QTEST_GUILESS_MAIN(TestCtlShells)
#include "test_ctl_shells.moc"
