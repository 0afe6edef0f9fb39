// SPDX-License-Identifier: MIT
//
// The yardstick: a Qt dialog with as many widgets of each kind as ours, no style sheet, no store, and the
// same two texts set every ten milliseconds.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>
#include <QTimerEvent>

namespace {

class BareDialog : public QDialog {
public:
    BareDialog()
    {
        m_grid = new QGridLayout(this);
        m_grid->setContentsMargins(0, 0, 0, 0);
        m_grid->setSpacing(0);
        // The dialog's widgets, counted by "dialog_bench census"; an address entry is a frame here.
        add<QLabel>(58);
        add<QLineEdit>(46);
        add<QCheckBox>(26);
        add<QRadioButton>(11);
        add<QPushButton>(8);
        add<QGroupBox>(3);
        add<QFrame>(17);
        add<QTextEdit>(1);
        for (int i = 0; i < 11; ++i) {
            QComboBox *combo = new QComboBox(this);
            for (int entry = 0; entry < (i == 0 ? 27 : 4); ++entry)
                combo->addItem(QStringLiteral("Entry %1").arg(entry));
            place(combo);
        }
        m_info = findChild<QLineEdit *>();
        m_time = findChildren<QLineEdit *>().at(1);
        setFixedSize(660, 640);
        startTimer(10, Qt::CoarseTimer);
    }

protected:
    void timerEvent(QTimerEvent *) override
    {
        const QString time =
            QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        if (m_info->text() != QLatin1String("GMT Time"))
            m_info->setText(QStringLiteral("GMT Time"));
        if (m_time->text() != time)
            m_time->setText(time);
    }

private:
    template<class Widget>
    void add(int count)
    {
        for (int i = 0; i < count; ++i)
            place(new Widget(this));
    }
    void place(QWidget *widget)
    {
        m_grid->addWidget(widget, m_count / 10, m_count % 10);
        ++m_count;
    }

    QGridLayout *m_grid = nullptr;
    QLineEdit *m_info = nullptr;
    QLineEdit *m_time = nullptr;
    int m_count = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    BareDialog dialog;
    dialog.show();
    return QApplication::exec();
}
