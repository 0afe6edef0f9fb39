// SPDX-License-Identifier: MIT
//
// The pictures of the papers, made by hands and eyes of a user: keys, clicks, and what is then on the
// screen, tips included. They are left in the folder "pictures" of the build tree, or in CORVEL_PICTURES.
#include "app/pictures/surroundings.h"
#include "support/dialog.h"
#include "support/filedialog.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QHelpEvent>
#include <QMenu>
#include <QPainter>
#include <QToolTip>

#include <memory>

using namespace DialogTest;

namespace {

constexpr qint64 kMostBytes = 150 * 1024;

// clang-format off
const char *const kPictures[] = {"video", "simple", "audio", "marks", "clock-states", "loaded", "take-back", "history"};

struct ClockRow {
    const char *name; // as the property "state" has it
    Surroundings::Clock clock;
};

const ClockRow kClockRows[] = {
    {"locked",       {RKPTP_LOCKED,            RKPTP_STATE_LOCKED,       "", true,  -1412, 120}},
    {"other master", {RKPTP_OTHER_GRANDMASTER, RKPTP_STATE_OTHER_MASTER, "", true,  -9804, 120}},
    {"stale",        {RKPTP_SYNC_LOST,         RKPTP_STATE_STALE,        "", true,  -1412, 9000}},
    {"no master",    {RKPTP_LISTENING,         RKPTP_STATE_NO_MASTER,    "", false, 0,     0}},
    {"no interface", {RKPTP_PORT_FAULTY,       RKPTP_STATE_NO_INTERFACE, "", false, 0,     0}},
    {"not allowed",  {RKPTP_NO_CLIENT,         RKPTP_STATE_NOT_ALLOWED,  "", false, 0,     0}},
};
// clang-format on

// One channel of a small plant. The third number of a group tells the element, the last one the flow.
QString shownText(const ChannelKey &key, int flow)
{
    const int element = 10 * (static_cast<int>(key.element) + 1) + (key.side == Side::Send ? 1 : 0);
    switch (key.field) {
    case Field::SourceAddress:
        return key.side == Side::Send ? QLatin1String(Surroundings::kInterface)
                                      : QStringLiteral("10.20.1.17");
    case Field::DestinationAddress:
        return QStringLiteral("239.20.%1.%2").arg(element).arg(flow + 1);
    case Field::Interface:
        return QLatin1String(Surroundings::kInterface);
    default:
        return QString();
    }
}

quint32 shownNumber(const ChannelKey &key)
{
    switch (key.field) {
    case Field::SourcePort:
        return key.side == Side::Send ? 20000 : 0;
    case Field::DestinationPort:
        return key.element == Element::Audio ? 5004 : 20000;
    case Field::Channels:
        return 8;
    case Field::TotalChannels:
        return 8 * kFlowCount;
    case Field::PacketTime:
        return 125;
    default: // the flags: destination address, its port and the interface are in use
        return 2 + 8 + 16;
    }
}

void fillStore()
{
    using namespace StoreTest;
    put(0, "VideoType", 1);
    put(0, "SignalFormat", 0x2380b232); // 1080P 50fps
    put(0, "ClockType", ClockSource::SoftwarePtp);
    put(0, "ClockDomain", 127);
    put(0, "ClockGrandMaster", QLatin1String(Surroundings::kGrandmaster));
    for (const ChannelKey &key : channelKeys()) {
        for (int flow = 0; flow < (key.perFlow ? kFlowCount : 1); ++flow) {
            const QByteArray name = valueName(key, QByteArray::number(flow));
            if (key.stored == Stored::Text)
                put(0, name, shownText(key, flow));
            else
                put(0, name, shownNumber(key));
        }
    }
}

void overrideNmos(bool on)
{
    setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, on ? 1 : 0);
}

// The window and what lies over it in windows of its own, also where they go beyond its edges.
QImage pictureOf(QWidget *window)
{
    QVector<QWidget *> shown{window};
    for (QWidget *over : QApplication::topLevelWidgets()) {
        const bool isOver = over->windowType() == Qt::ToolTip || over->windowType() == Qt::Popup;
        if (over->isVisible() && isOver)
            shown.append(over);
    }
    QRect all;
    for (const QWidget *widget : shown)
        all |= widget->geometry();
    QImage picture(all.size(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    for (QWidget *widget : shown)
        painter.drawPixmap(widget->geometry().topLeft() - all.topLeft(), widget->grab());
    return picture;
}

void save(const QImage &picture, const char *name)
{
    const QString folder =
        qEnvironmentVariable("CORVEL_PICTURES", QStringLiteral(CORVEL_BUILD_DIR "/pictures"));
    QVERIFY(QDir().mkpath(folder));
    const QString path = QStringLiteral("%1/%2.png").arg(folder, QLatin1String(name));
    QVERIFY2(picture.convertToFormat(QImage::Format_RGB888).save(path, "PNG", 0), qPrintable(path));
    QVERIFY2(QFileInfo(path).size() < kMostBytes, qPrintable(path));
}

void showTip(QWidget *widget)
{
    const QPoint middle = widget->rect().center();
    QHelpEvent help(QEvent::ToolTip, middle, widget->mapToGlobal(middle));
    QApplication::sendEvent(widget, &help);
}

} // namespace

class TestPictures : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void video();
    void simple();
    void audio();
    void marks();
    void clockStates();
    void loaded();
    void takeBackAndHistory();
    void thePapersShowNoOther();

private:
    void open();
    QCorvel *q() { return m_dialog.get(); }
    QImage clockLines();

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestPictures::init()
{
    Surroundings::shownClock() = {};
    m_store = std::make_unique<FreshStore>();
    fillStore();
    overrideNmos(true);
}

void TestPictures::cleanup()
{
    QToolTip::hideText();
    m_dialog.reset();
    m_store.reset();
}

void TestPictures::open()
{
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    letItTick(m_dialog.get());
}

void TestPictures::video()
{
    open();
    save(pictureOf(q()), "video");
}

void TestPictures::simple()
{
    overrideNmos(false);
    open();
    save(pictureOf(q()), "simple");
}

void TestPictures::audio()
{
    open();
    click(q()->m_pAudioConfig);
    click(q()->m_pAudFlowSelect[2]);
    save(pictureOf(q()), "audio");
}

void TestPictures::marks()
{
    open();
    q()->m_pCheckErrs->setChecked(false);
    typeAddress(q()->m_pEditRecIFace, QStringLiteral("10.20.1.99"));
    typeText(q()->m_pEditRecDstPort, QStringLiteral("20000x"));
    QCoreApplication::processEvents();
    showTip(q()->m_pEditRecDstPort);
    save(pictureOf(q()), "marks");
}

QImage TestPictures::clockLines()
{
    const auto placeOf = [this](QWidget *line) {
        return QRect(line->mapTo(q(), QPoint(0, 0)), line->size());
    };
    const QRect both = placeOf(q()->m_pComboClkMstr) | placeOf(q()->m_pEditClockDomain);
    return q()->grab(both.adjusted(-4, -3, 4, 3)).toImage();
}

// The lines in each state, one pair under the other, with the state's name beside.
void TestPictures::clockStates()
{
    open();
    QImage all;
    int top = 0;
    for (const ClockRow &row : kClockRows) {
        Surroundings::shownClock() = row.clock;
        if (q()->m_pComboClkMstr->property("state").isValid())
            QTRY_COMPARE(q()->m_pComboClkMstr->property("state").toString(), QLatin1String(row.name));
        letItTick(q());
        const QImage lines = clockLines();
        const int nameWidth = lines.width() / 3;
        if (all.isNull()) {
            all = QImage(nameWidth + lines.width(), lines.height() * int(std::size(kClockRows)),
                         QImage::Format_RGB32);
            all.fill(lines.pixel(0, 0));
        }
        QPainter painter(&all);
        painter.setFont(q()->font());
        painter.setPen(Qt::white);
        painter.drawText(QRect(8, top, nameWidth, lines.height()), Qt::AlignVCenter, QLatin1String(row.name));
        painter.drawImage(nameWidth, top, lines);
        top += lines.height();
    }
    save(all, "clock-states");
}

// A settings file that was saved here and comes back.
void TestPictures::loaded()
{
    open();
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("studio-2.ipp"));
    {
        const FileAnswer answer(path);
        click(q()->m_pCmdSave);
    }
    const FileAnswer answer(path);
    click(q()->m_pCmdLoad);
    QCOMPARE(answer.shown, 1);
    letItTick(q());
    save(pictureOf(q()), "loaded");
}

// A day's work, the menu over the page, and the window that the menu's last entry opens.
void TestPictures::takeBackAndHistory()
{
    open();
    typeAddress(q()->m_pLineRecDstAddr, QStringLiteral("239.20.10.7"));
    typeText(q()->m_pEditRecDstPort, QStringLiteral("20004"));
    click(q()->m_pAudioConfig);
    typeAddress(q()->m_pLineSndDstAddr, QStringLiteral("239.20.21.9"));
    const QPoint done = q()->m_pCmdAccept->mapTo(q(), q()->m_pCmdAccept->rect().center());
    const QPoint empty(q()->width() / 2 - 80, done.y());
    QContextMenuEvent click(QContextMenuEvent::Mouse, empty, q()->mapToGlobal(empty));
    QApplication::sendEvent(q(), &click);
    QPointer<QMenu> menu = q()->findChild<QMenu *>(QStringLiteral("historyMenu"));
    if (!menu)
        return;
    save(pictureOf(q()), "take-back");
    menu->actions().last()->trigger();
    menu->close();
    auto *list = q()->findChild<QDialog *>(QStringLiteral("historyList"));
    QVERIFY(list);
    QVERIFY(QTest::qWaitForWindowExposed(list));
    save(pictureOf(list), "history");
}

void TestPictures::thePapersShowNoOther()
{
    const QStringList shown =
        QDir(QStringLiteral(CORVEL_PAPERS "/images")).entryList({QStringLiteral("*.png")}, QDir::Files);
    QVERIFY(!shown.isEmpty());
    for (const QString &picture : shown) {
        const auto isMade = [&](const char *name) {
            return picture == QLatin1String(name) + QLatin1String(".png");
        };
        QVERIFY2(std::any_of(std::begin(kPictures), std::end(kPictures), isMade), qPrintable(picture));
    }
}

CORVEL_DIALOG_TEST_MAIN(TestPictures)
#include "test_pictures.moc"
