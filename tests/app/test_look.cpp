// SPDX-License-Identifier: MIT
//
// Every state of the dialog at one screen resolution (one run of this program each): nothing is cut,
// nothing overlaps, everything is inside and reachable with the Tab key in the order of the eye. A
// picture of each state is left in the folder "screenshots" of the build tree.
#include "app/view/clockstate.h"
#include "support/dialog.h"

#include <QAbstractEventDispatcher>
#include <QDir>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>

#include <memory>

using namespace DialogTest;

namespace {

enum class Shown { Video, Audio, Anc, Simple };

struct State {
    const char *name;
    Shown shown;
    quint32 flows;
};

// clang-format off
const State kStates[] = {
    {"video",        Shown::Video,  1},
    {"video-8flows", Shown::Video,  8},
    {"audio-1flow",  Shown::Audio,  1},
    {"audio-8flows", Shown::Audio,  8},
    {"anc",          Shown::Anc,    8},
    {"simple",       Shown::Simple, 8},
};
// clang-format on

void fillStore(quint32 flows)
{
    using namespace StoreTest;
    setGlobalDword("KWX\\Advanced\\AvHAL", "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "SignalFormat", 641790011);
    put(0, "ClockType", 65536);
    put(0, "ClockDomain", 127);
    put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1-FF-FE-12-34-56"));
    put(0, "ReceiveAudChannels", 2);
    put(0, "TransmitAudChannels", 2);
    put(0, "ReceiveAudTotalChannels", 2 * flows);
    for (const ChannelKey &key : channelKeys()) {
        if (key.field == Field::Flags)
            put(0, valueName(key, "0"), key.side == Side::Receive ? 26 : 27);
        else if (key.field == Field::Interface)
            put(0, key.name, QStringLiteral("10.20.1.5"));
        else if (key.field == Field::DestinationAddress)
            put(0, valueName(key, "0"), QStringLiteral("239.255.255.255"));
        else if (key.field == Field::SourceAddress)
            put(0, valueName(key, "0"), QStringLiteral("10.20.1.17"));
        else if (key.field == Field::SourcePort || key.field == Field::DestinationPort)
            put(0, valueName(key, "0"), 65535);
    }
}

bool isDecoration(const QWidget *widget)
{
    return widget->testAttribute(Qt::WA_TransparentForMouseEvents) && widget->inherits("QFrame") &&
           !widget->inherits("QLabel");
}

// Controls a person reads or uses; containers and painted surfaces are left out.
QList<QWidget *> controls(const QWidget *window)
{
    QList<QWidget *> found;
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->window() != window || isDecoration(widget))
            continue;
        const bool isControl = widget->inherits("QAbstractButton") || widget->inherits("QComboBox") ||
                               widget->inherits("QLineEdit") || widget->inherits("QLabel") ||
                               widget->inherits("QTextEdit");
        const bool isInner = widget->parentWidget()->inherits("QComboBox") ||
                             widget->objectName() == QLatin1String("qt_scrollarea_viewport");
        if (isControl && !isInner)
            found.append(widget);
    }
    return found;
}

QRect placeIn(const QWidget *window, const QWidget *widget)
{
    return QRect(widget->mapTo(window, QPoint(0, 0)), widget->size());
}

QString nameOf(const QWidget *widget)
{
    const QString own = widget->objectName();
    const QString outer = widget->parentWidget() ? widget->parentWidget()->objectName() : QString();
    return QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + outer + QLatin1Char('/') +
           own;
}

} // namespace

class TestLook : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void nothingIsCutOrOverlaps_data() { states(); }
    void nothingIsCutOrOverlaps();
    void tabFollowsTheEye_data() { states(); }
    void tabFollowsTheEye();
    void everyFieldHasANameAndABuddy();
    void useBoxesStandUnderTheirHead();
    void oneLeftEdge();
    void marks();
    void clockStates_data();
    void clockStates();
    void childDialogs();
    void embedded();

private:
    static void states()
    {
        QTest::addColumn<int>("index");
        int index = 0;
        for (const State &state : kStates)
            QTest::newRow(state.name) << index++;
    }
    void enter(const State &state);
    static void checkNothingCut(QWidget *window);
    static void savePicture(QWidget *window, const QString &name);

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestLook::enter(const State &state)
{
    fillStore(state.flows);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    m_dialog->m_pCheckErrs->setChecked(true);
    if (state.shown == Shown::Audio)
        click(m_dialog->m_pAudioConfig);
    else if (state.shown == Shown::Anc)
        click(m_dialog->m_pAncConfig);
    else if (state.shown == Shown::Simple)
        m_dialog->m_pSwapLayout->setCurrentIndex(1);
    letItTick(m_dialog.get()); // the clock lines
}

void TestLook::savePicture(QWidget *window, const QString &name)
{
    const QString folder = QStringLiteral(CORVEL_BUILD_DIR "/screenshots");
    QDir().mkpath(folder);
    const int dpi = qRound(window->screen()->logicalDotsPerInchY());
    QVERIFY(window->grab().save(QStringLiteral("%1/%2-%3.png").arg(folder, name).arg(dpi)));
}

void TestLook::checkNothingCut(QWidget *window)
{
    const QList<QWidget *> all = controls(window);
    QVERIFY(all.size() >= 2);
    for (const QWidget *widget : all) {
        const QRect place = placeIn(window, widget);
        QVERIFY2(window->rect().contains(place),
                 qPrintable(QStringLiteral("%1 is outside").arg(nameOf(widget))));
        const QSize wanted = widget->inherits("QLineEdit") || widget->inherits("QTextEdit")
                                 ? QSize(0, widget->fontMetrics().height())
                             : widget->inherits("QComboBox") ? QSize()
                                                             : widget->sizeHint();
        QVERIFY2(widget->width() >= wanted.width() && widget->height() >= widget->fontMetrics().height(),
                 qPrintable(QStringLiteral("%1 is %2x%3, wants %4x%5")
                                .arg(nameOf(widget))
                                .arg(widget->width())
                                .arg(widget->height())
                                .arg(wanted.width())
                                .arg(widget->fontMetrics().height())));
        if (const QComboBox *combo = qobject_cast<const QComboBox *>(widget)) {
            QStyleOptionComboBox option;
            option.initFrom(combo);
            option.editable = false;
            option.subControls = QStyle::SC_All;
            const QRect field = combo->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                               QStyle::SC_ComboBoxEditField, combo);
            for (int i = 0; i < combo->count(); ++i) {
                const int width = combo->fontMetrics().horizontalAdvance(combo->itemText(i));
                QVERIFY2(width <= field.width(), qPrintable(QStringLiteral("%1 cuts \"%2\": %3 of %4")
                                                                .arg(nameOf(combo), combo->itemText(i))
                                                                .arg(field.width())
                                                                .arg(width)));
            }
        } else if (const QLineEdit *edit = qobject_cast<const QLineEdit *>(widget)) {
            const int room = edit->width() - 6;
            QVERIFY2(edit->fontMetrics().horizontalAdvance(edit->text()) <= room,
                     qPrintable(QStringLiteral("%1 cuts \"%2\"").arg(nameOf(edit), edit->text())));
        }
    }
    for (int i = 0; i < all.size(); ++i) {
        for (int k = i + 1; k < all.size(); ++k) {
            if (all[i]->isAncestorOf(all[k]) || all[k]->isAncestorOf(all[i]))
                continue;
            QVERIFY2(!placeIn(window, all[i]).intersects(placeIn(window, all[k])),
                     qPrintable(nameOf(all[i]) + QLatin1String(" overlaps ") + nameOf(all[k])));
        }
    }
}

void TestLook::nothingIsCutOrOverlaps()
{
    QFETCH(int, index);
    enter(kStates[index]);
    const double factor = qMax(1.0, m_dialog->screen()->logicalDotsPerInchY() / 96.0);
    QCOMPARE(m_dialog->size(), QSize(int(660 * factor), int(640 * factor)));
    savePicture(m_dialog.get(), QLatin1String(kStates[index].name));
    checkNothingCut(m_dialog.get());
}

// Tab goes down the page row by row: never up, and within one row never to the left.
void TestLook::tabFollowsTheEye()
{
    QFETCH(int, index);
    enter(kStates[index]);
    m_dialog->m_pCheckErrs->setChecked(false); // an alert would take the focus
    m_dialog->m_pChannel->setFocus();
    QSet<QWidget *> visited;
    QWidget *last = nullptr;
    const int rowHeight = m_dialog->m_pComboType->height();
    for (int step = 0; step < 200; ++step) {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        if (visited.contains(focus))
            break;
        if (last) {
            const QPoint from = placeIn(m_dialog.get(), last).center();
            const QPoint to = placeIn(m_dialog.get(), focus).center();
            const bool sameRow = qAbs(to.y() - from.y()) < rowHeight / 2;
            QVERIFY2(sameRow ? to.x() > from.x() : to.y() > from.y(),
                     qPrintable(nameOf(last) + QLatin1String(" leads back to ") + nameOf(focus)));
        }
        visited.insert(focus);
        last = focus;
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    for (QWidget *widget : controls(m_dialog.get())) {
        const bool byTab = widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus);
        const QRadioButton *radio = qobject_cast<QRadioButton *>(widget);
        if (!byTab || (radio && !radio->isChecked())) // the arrow keys move inside a set
            continue;
        QVERIFY2(visited.contains(widget), qPrintable(nameOf(widget) + QLatin1String(" is never reached")));
    }
    QVERIFY(!visited.contains(m_dialog->m_pCmdSaveElement));
}

void TestLook::everyFieldHasANameAndABuddy()
{
    enter(kStates[3]);
    QSet<QWidget *> buddies;
    for (const QLabel *label : m_dialog->findChildren<QLabel *>())
        buddies.insert(label->buddy());
    for (QWidget *widget : controls(m_dialog.get())) {
        const bool isField = widget->inherits("QLineEdit") || widget->inherits("QComboBox");
        if (widget->inherits("QLabel"))
            continue;
        const QAbstractButton *button = qobject_cast<QAbstractButton *>(widget);
        QVERIFY2(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()),
                 qPrintable(nameOf(widget) + QLatin1String(" has no name")));
        const bool firstOctet = widget->objectName() == QLatin1String("octet0");
        const bool otherOctet = widget->parentWidget()->inherits("QLineAddress") && !firstOctet;
        if (!isField || otherOctet || widget == m_dialog->m_pConfig || widget == m_dialog->m_pEditGmAddress)
            continue; // the configuration has no label, the grandmaster a check box
        QVERIFY2(buddies.contains(widget), qPrintable(nameOf(widget) + QLatin1String(" has no label")));
    }
}

// Where the eye sees the middle of a box.
static int middleOfBox(const QCheckBox *box)
{
    QStyleOptionButton option;
    option.initFrom(box);
    const QRect indicator = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box);
    return box->mapTo(box->window(), indicator.center()).x();
}

// The part of a label that its text is centred in.
static QRect headText(const QLabel *label)
{
    QStyleOption option;
    option.initFrom(label);
    return label->style()->subElementRect(QStyle::SE_ShapedFrameContents, &option, label);
}

void TestLook::useBoxesStandUnderTheirHead()
{
    enter(kStates[0]);
    for (const char *head : {"m_pUseHead0", "m_pUseHead1"}) {
        const QLabel *label = m_dialog->findChild<QLabel *>(QLatin1String(head));
        QVERIFY(label && label->alignment() == Qt::AlignCenter);
        const int axis = label->mapTo(m_dialog.get(), headText(label).center()).x();
        for (const QCheckBox *box : m_dialog->findChildren<QCheckBox *>()) {
            if (box->property("role") == QLatin1String("use"))
                QVERIFY2(qAbs(middleOfBox(box) - axis) <= 1, qPrintable(box->objectName()));
        }
    }
}

// The first column of the picture of a control that is not its ground, in the window.
static int leftEdge(QWidget *control)
{
    const QImage picture = control->grab().toImage().convertToFormat(QImage::Format_RGB32);
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixel(x, y) != picture.pixel(0, y))
                return control->mapTo(control->window(), QPoint(x, y)).x();
        }
    }
    return -1;
}

// A letter may begin up to two pixels behind its place.
void TestLook::oneLeftEdge()
{
    enter(kStates[0]);
    const int edge = leftEdge(m_dialog->m_pNmosOverride);
    QList<QWidget *> rows = {m_dialog->m_pUseGmId, m_dialog->m_pChannelLbl, m_dialog->m_pReceiveLbl,
                             m_dialog->m_pSendLbl};
    for (QLabel *label : m_dialog->findChildren<QLabel *>()) {
        if (label->property("role") == QLatin1String("row"))
            rows.append(label);
    }
    QVERIFY(rows.size() >= 19);
    const int leeway = qRound(3 * QCorvel::fontFactor());
    for (QWidget *row : rows)
        QVERIFY2(qAbs(leftEdge(row) - edge) <= leeway,
                 qPrintable(QStringLiteral("%1: %2 of %3").arg(nameOf(row)).arg(leftEdge(row)).arg(edge)));
}

// Wrong texts, and above and below them what can be told over the page.
void TestLook::marks()
{
    enter(kStates[0]);
    m_dialog->m_pCheckErrs->setChecked(false);
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("65x"));
    typeText(m_dialog->m_pEditSndSrcPort, QString());
    typeText(m_dialog->m_pEditGmId, QStringLiteral("128"));
    QLineEdit *octet = m_dialog->m_pLineSndDstAddr->m_pLineEdit[1];
    QTest::mouseClick(octet, Qt::LeftButton);
    QTest::keyClick(octet, Qt::Key_Delete);
    QTest::mouseClick(m_dialog->m_pEditRecSrcPort, Qt::LeftButton);
    for (const QWidget *field : std::initializer_list<QWidget *>{
             m_dialog->m_pEditRecDstPort, m_dialog->m_pEditSndSrcPort, m_dialog->m_pEditGmId,
             m_dialog->m_pLineSndDstAddr, m_dialog->m_pEditRecIFace})
        QTRY_VERIFY2(field->property("invalid").toBool(), qPrintable(field->objectName()));
    savePicture(m_dialog.get(), QStringLiteral("marks"));
    checkNothingCut(m_dialog.get());
}

void TestLook::clockStates_data()
{
    QTest::addColumn<int>("state");
    for (int state = 0; state <= static_cast<int>(ClockState::Failed); ++state)
        QTest::newRow(qPrintable(clockStateName(static_cast<ClockState>(state)))) << state;
}

// Which pixels of a line are brighter than its ground and frame: the shape without the colour. Its ends are
// enough; the text stands between them.
static QByteArray shapeOf(QWidget *line)
{
    const QImage picture = line->grab().toImage();
    QByteArray shape;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (x < 8 || x > picture.width() - 60)
                shape.append(qGray(picture.pixel(x, y)) > 0x60 ? '#' : ' ');
        }
    }
    return shape;
}

// Each has its own shape; what is for the administrator, and what the client cannot do, share one each.
void TestLook::clockStates()
{
    QFETCH(int, state);
    enter(kStates[0]);
    QAbstractEventDispatcher::instance()->unregisterTimer(m_dialog->timerId);
    m_dialog->m_pComboClkMstr->setText(QStringLiteral("PTPv2 D:127 00-1D-C1-FF-FE-12-34-56-1"));
    m_dialog->m_pEditClockDomain->setText(QStringLiteral("2026-11-21 03:04:05.123456789 (-1,234,567 ns)"));
    const ClockState clock = static_cast<ClockState>(state);
    ClockStateLines(m_dialog->m_pComboClkMstr, m_dialog->m_pEditClockDomain)
        .show(clock, clockStateAdvice(clock));
    QString name = clockStateName(clock);
    savePicture(m_dialog.get(), QStringLiteral("clock-") + name.replace(QLatin1Char(' '), QLatin1Char('-')));
    checkNothingCut(m_dialog.get());
    static QHash<QByteArray, ClockState> seen;
    const QByteArray shape = shapeOf(m_dialog->m_pComboClkMstr);
    const ClockState other = seen.value(shape, clock);
    const bool isPair = (other == ClockState::NotAllowed && clock == ClockState::SystemClient) ||
                        (other == ClockState::NotRunning && clock == ClockState::Failed);
    QVERIFY2(other == clock || isPair, qPrintable(clockStateName(other)));
    seen.insert(shape, clock);
}

void TestLook::childDialogs()
{
    enter(kStates[0]);
    click(m_dialog->m_pOpenNmosCfg);
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog->m_pNmosCfg));
    savePicture(m_dialog->m_pNmosCfg, QStringLiteral("nmos"));
    checkNothingCut(m_dialog->m_pNmosCfg);
    m_dialog->m_pNmosCfg->close();

    m_dialog->m_pEditErrMsg->setPlainText(
        QStringLiteral("Video IP 255.255.255.255 does not exist!  Please correct the adapter or setting\n"
                       "Audio IP 255.255.255.255 does not exist!  Please correct the adapter or setting\n"
                       "Anc IP 255.255.255.255 does not exist!  Please correct the adapter or setting\n"));
    m_dialog->m_pErrDlg->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog->m_pErrDlg));
    savePicture(m_dialog->m_pErrDlg, QStringLiteral("errors"));
    checkNothingCut(m_dialog->m_pErrDlg);
    m_dialog->m_pErrDlg->hide();

    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        QWidget *box = QApplication::activeModalWidget();
        if (!box || !box->isVisible())
            return;
        answer.stop();
        savePicture(box, QStringLiteral("confirm"));
        checkNothingCut(box);
        box->close();
    });
    answer.start(5);
    click(m_dialog->m_pNmosOverride);
    QVERIFY(!answer.isActive());
}

void TestLook::embedded()
{
    fillStore(8);
    m_dialog = std::make_unique<QCorvel>(static_cast<QWidget *>(nullptr));
    show(m_dialog.get());
    savePicture(m_dialog.get(), QStringLiteral("embedded"));
    checkNothingCut(m_dialog.get());
}

CORVEL_DIALOG_TEST_MAIN(TestLook)
#include "test_look.moc"
