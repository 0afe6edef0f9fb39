// SPDX-License-Identifier: MIT
//
// Calls of the configuration library that a site's own library may lack. Each is looked up when it is
// first needed; without it the function says so, and its caller does what it did before there was one.
// All of them are for the default store. User interface thread; they block for as long as the store does.
#ifndef CORVEL_STORECALLS_H
#define CORVEL_STORECALLS_H

#include <QString>

#include <functional>

// What happened in the store since the mark was last asked about.
enum class StoreNews {
    None,       // at most this process's own writes; also where the library cannot tell
    Others,     // somebody else wrote, or the default configuration is another one
    Unreadable, // the store cannot be read now
};

// True when the library can tell whether others wrote.
bool storeTellsNews();
// True when the library can make a run of writes one transaction.
bool storeHasTransactions();

// mark is the caller's, 0 at first: the first answer is then Others. Microseconds, no lock.
StoreNews storeNews(quint64 *mark);

// All writes while the object lives are one transaction of the configuration that is the default when it
// begins: all or nothing. For this process that configuration stays in use to the end, whatever other
// programs choose. Without the call, inside another transaction, and while another program holds the store,
// it is not open and each write stands alone.
class StoreTransaction {
public:
    StoreTransaction();
    explicit StoreTransaction(void *store); // of another configuration's handle
    ~StoreTransaction();                    // takes back what was not kept
    StoreTransaction(const StoreTransaction &) = delete;
    StoreTransaction &operator=(const StoreTransaction &) = delete;

    // True when the writes inside are one step.
    bool isOpen() const { return m_open; }
    // Ends it. False when nothing of it is stored.
    bool keep();

private:
    void *m_store;
    bool m_open;
};

// Names the batch that the next write starts, for the history. At most 200 bytes; longer ones are cut.
void labelNextBatch(const QString &label);

// One change of the store's history.
struct StoreChange {
    // A value before or after the change.
    struct Value {
        enum class Type { Absent, Text, Number } type = Type::Absent;
        QByteArray text;
        quint32 number = 0;

        bool operator==(const Value &other) const
        {
            return type == other.type && text == other.text && number == other.number;
        }
    };
    qint64 id = 0;
    qint64 batch = 0;
    qint64 timeUs = 0; // since 1970, UTC
    QString program, user, label;
    quint32 pid = 0;
    QByteArray path, name;
    Value before, after;
    qint64 undoes = 0; // the batch that this one took back, or 0
};

// True when the library keeps a history.
bool storeHasHistory();

// The changes with an id above `after`, oldest first; -1: all, newest first. False ends the walk. Returns
// false when the history cannot be read or there is none.
bool walkHistory(qint64 after, const std::function<bool(const StoreChange &)> &visit);

// Takes a batch back. Conflicts (values that were changed since) are visited and left alone unless force;
// in them `after` is what is there now and `before` what would be put back. With dryRun nothing is changed.
// Returns the number of conflicts left alone, -1 when nothing could be done. newBatch may be null.
int takeBatchBack(qint64 batch, bool force, bool dryRun,
                  const std::function<bool(const StoreChange &)> &conflict, qint64 *newBatch);

#endif
