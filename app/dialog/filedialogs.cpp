// SPDX-License-Identifier: MIT
#include "app/dialog/filedialogs.h"

#include "app/corvel.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLocale>
#include <QScreen>
#include <QSplitter>
#include <QTreeView>

namespace {

constexpr int kWidth = 780; // at 96 dpi, as all lengths here
constexpr int kHeight = 480;
constexpr int kPlaces = 150; // the list of places at the left
constexpr int kColumnGap = 24;

int scaled(int pixels)
{
    return static_cast<int>(pixels * QCorvel::fontFactor());
}

// The widest that stands in the columns after the name: size, type, date.
QStringList widestTexts()
{
    const QLocale locale = QLocale::system();
    return {locale.formattedDataSize(1047527424), QStringLiteral("MMMM File"),
            locale.toString(QDateTime(QDate(2028, 12, 28), QTime(22, 58, 58)), QLocale::ShortFormat)};
}

void layColumns(const QTreeView *list, int room)
{
    QHeaderView *header = list->header();
    const QStringList texts = widestTexts();
    for (int column = 1; column <= texts.size() && column < header->count(); ++column) {
        const int text = list->fontMetrics().horizontalAdvance(texts.at(column - 1));
        const int width = qMax(text + scaled(kColumnGap), header->sectionSizeHint(column));
        header->resizeSection(column, width);
        room -= width;
    }
    header->resizeSection(0, qMax(room, scaled(kPlaces))); // on a small screen the list scrolls
}

// The toolkit's dialog has one size in pixels at every scale and takes over the columns of the last one.
void fit(QFileDialog *dialog)
{
    const QSize room = dialog->screen()->availableSize();
    dialog->resize(QSize(scaled(kWidth), scaled(kHeight)).boundedTo(room));
    auto *splitter = dialog->findChild<QSplitter *>(QStringLiteral("splitter"));
    auto *list = dialog->findChild<QTreeView *>(QStringLiteral("treeView"));
    if (!splitter || !list)
        return;
    const int places = scaled(kPlaces);
    splitter->setSizes({places, dialog->width() - places});
    layColumns(list, dialog->width() - places - scaled(3 * kColumnGap));
}

// Fits the file dialogs that open while it lives; a host's own are left alone.
class Fitter : public QObject {
public:
    Fitter() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && watched->inherits("QFileDialog"))
            fit(static_cast<QFileDialog *>(watched));
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

QString askFileToLoad(const QString &caption, const QString &folder, const QString &filters)
{
    const Fitter fitter;
    return QDir::toNativeSeparators(QFileDialog::getOpenFileName(nullptr, caption, folder, filters, nullptr,
                                                                 QFileDialog::DontUseNativeDialog));
}

QString askFileToSave(const QString &caption, const QString &folder, const QString &filters)
{
    const Fitter fitter;
    return QDir::toNativeSeparators(QFileDialog::getSaveFileName(nullptr, caption, folder, filters, nullptr,
                                                                 QFileDialog::DontUseNativeDialog));
}
