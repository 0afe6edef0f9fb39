// SPDX-License-Identifier: MIT
//
// One octet of a QLineAddress: a line edit that knows it is a quarter of an address when text is copied,
// pasted or dropped. Everything else it does as any line edit.
#ifndef CORVEL_OCTETEDIT_H
#define CORVEL_OCTETEDIT_H

#include <QLineEdit>

class QKeyEvent;
class QLineAddress;
class QMenu;

// No Q_OBJECT: to style sheets and tools an octet stays a QLineEdit.
class OctetEdit : public QLineEdit {
public:
    // The address owns the octet and outlives it.
    explicit OctetEdit(QLineAddress *address);

    // True for keys that are commands and type nothing: with Ctrl, Alt or Meta, or for the clipboard.
    static bool isCommand(const QKeyEvent &event);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    bool offer(const QString &text);
    bool standsForTheAddress() const;
    void copyText();
    void pasteText();
    void addAddressActions(QMenu *menu);

    QLineAddress *m_address;
    bool m_typing = false; // a key that the address has announced is being applied
};

#endif
