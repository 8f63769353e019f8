#pragma once

#include "toolboxes/importData/entries/DataEntry.h"
#include "toolboxes/importData/sequence/FramePages.h"
#include "toolboxes/importData/sequence/SequenceReading.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

#include <vector>

namespace torvex {

// The named entries of a session, one per load, in the order they were made,
// and which row is current. A row may be current before its entry exists:
// the list shows a new row a moment before its entry is written.
class EntryStore {
public:
    struct Entry {
        QString name; // the variable name it is imported under
        DataEntry record;
        // Of an image sequence: all the files its filter chose from, whether
        // they are in the natural order of their names, and how they were read.
        std::optional<QStringList> fileList;
        bool naturalOrder = false;
        SequenceReading reading;
        QList<FramePage> framePages;          // see ImportSession::framePages
        QMap<int, QString> placeholderFrames; // see ImportSession::placeholderFrames
    };

    int size() const { return static_cast<int>(entries_.size()); }
    // The entry of a row, or nullptr when the row has none.
    const Entry* find(int row) const;
    int current() const { return current_; }
    void setCurrent(int row) { current_ = row; }

    // Appends an entry (named as uniqueName gives) and returns its row.
    int add(const Entry& entry);
    void write(int row, const Entry& entry);
    // Renames a row to the valid Python name the typed text becomes, and returns it.
    QString rename(int row, const QString& typed);
    // `base`, or the first of `base`_1, `base`_2, ... that no entry is named.
    QString uniqueName(const QString& base) const;

private:
    std::vector<Entry> entries_;
    int current_ = -1;
};

} // namespace torvex
