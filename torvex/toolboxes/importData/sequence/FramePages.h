#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace torvex {

// Which page of its file a row of an image sequence stands for.
struct FramePage {
    int page = 0;  // from 0
    int count = 1; // pages of the file
    bool operator==(const FramePage&) const = default;
};

// One row per page of each file, in order: the rows' paths (a file of n
// pages n times) and their pages. Only TIFF and GIF files have more than one page.
struct PagedRows {
    QStringList paths;
    QList<FramePage> pages;
};
PagedRows everyPage(const QStringList& files);

// "name.tif [3/40]" for page 2 of 40; the name alone for a file of one page.
QString pageLabel(const QString& name, FramePage page);

} // namespace torvex
