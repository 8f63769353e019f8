#include "toolboxes/importData/model/EntryStore.h"

#include "toolboxes/importData/entries/VariableNames.h"

#include <QSet>

namespace torvex {

const EntryStore::Entry* EntryStore::find(int row) const
{
    return row >= 0 && row < size() ? &entries_[static_cast<size_t>(row)] : nullptr;
}

int EntryStore::add(const Entry& entry)
{
    entries_.push_back(entry);
    return size() - 1;
}

void EntryStore::write(int row, const Entry& entry)
{
    if (row >= 0 && row < size()) entries_[static_cast<size_t>(row)] = entry;
}

QString EntryStore::rename(int row, const QString& typed)
{
    const QString name = validVariableName(typed);
    if (row >= 0 && row < size()) entries_[static_cast<size_t>(row)].name = name;
    return name;
}

QString EntryStore::uniqueName(const QString& base) const
{
    QSet<QString> existing;
    for (const Entry& entry : entries_) existing.insert(entry.name);
    return uniqueVariableName(base, existing);
}

} // namespace torvex
