// SPDX-License-Identifier: MIT
#include "theme/portfield.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>

namespace {

class ClickSelector : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonRelease &&
            static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
            auto *edit = static_cast<QLineEdit *>(watched);
            // The press took away every selection; what is there now was dragged.
            if (!edit->hasSelectedText())
                edit->selectAll();
        }
        return QObject::eventFilter(watched, event);
    }
};

class DropTaker : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *edit = static_cast<QLineEdit *>(watched);
        auto *drop = event->type() == QEvent::Drop ? static_cast<QDropEvent *>(event) : nullptr;
        if (!drop || edit->isReadOnly() || drop->source() == edit || !drop->mimeData()->hasText())
            return QObject::eventFilter(watched, event);
        edit->selectAll();
        edit->insert(drop->mimeData()->text().trimmed());
        drop->acceptProposedAction();
        emit edit->editingFinished();
        return true;
    }
};

QString translated(const char *text)
{
    return QCoreApplication::translate("PortField", text);
}

} // namespace

void selectAllOnClick(QLineEdit *edit)
{
    edit->installEventFilter(new ClickSelector(edit));
}

void takeDrops(QLineEdit *edit)
{
    edit->installEventFilter(new DropTaker(edit));
}

QString portProblem(const QString &text)
{
    const QString digits = text.trimmed();
    if (digits.isEmpty())
        return translated("The port is empty.");
    const bool number = std::all_of(digits.cbegin(), digits.cend(),
                                    [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
    if (!number)
        return translated("\"%1\" is no port number.").arg(text);
    bool fits = false;
    const uint port = digits.toUInt(&fits, 10);
    if (!fits || port > 65535)
        return translated("%1 is too large for a port: the largest one is 65535.").arg(digits);
    return QString();
}
