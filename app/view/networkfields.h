// SPDX-License-Identifier: MIT
//
// View: the ten network fields of the page, five for each side. A field is a value (an address or a
// port), a box that says whether it is in use and a box that locks it.
#ifndef CORVEL_VIEW_NETWORKFIELDS_H
#define CORVEL_VIEW_NETWORKFIELDS_H

#include "channel/channelkeys.h"

#include <QString>
#include <QVector>

class QCheckBox;
class QLineAddress;
class QLineEdit;
class QWidget;

struct NetworkField {
    Side side;
    Field field;
    QLineAddress *address; // this or edit holds the value, the other one is null
    QLineEdit *edit;
    QCheckBox *use;
    QCheckBox *lock;

    QString value() const;
    void setValue(const QString &value) const;
    QWidget *control() const;
};

class NetworkFields {
public:
    NetworkFields() = default;
    explicit NetworkFields(const QVector<NetworkField> &rows) : m_rows(rows) {}

    // In the order of the eye: receive, then send.
    QVector<NetworkField>::const_iterator begin() const { return m_rows.cbegin(); }
    QVector<NetworkField>::const_iterator end() const { return m_rows.cend(); }

    // The row of one field. A Field that is no network field is a mistake in the program and ends it: any
    // other row would have a neighbour's value overwritten.
    const NetworkField &at(Side side, Field field) const;

    // The use boxes of one side as the bits of a value whose name ends in "Flags".
    void showFlags(Side side, quint32 flags) const;
    quint32 flags(Side side) const;

private:
    QVector<NetworkField> m_rows;
};

#endif
