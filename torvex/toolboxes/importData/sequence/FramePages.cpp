#include "FramePages.h"

#include "StillImageDecoder.h"

namespace torvex {

PagedRows everyPage(const QStringList& files)
{
    PagedRows rows;
    for (const QString& file : files) {
        // Opening every file to count its pages would slow large folders of
        // other formats for nothing.
        const bool paged = file.endsWith(".tif", Qt::CaseInsensitive) || file.endsWith(".tiff", Qt::CaseInsensitive)
                           || file.endsWith(".gif", Qt::CaseInsensitive);
        const int count = paged ? stillImagePageCount(file) : 1;
        for (int page = 0; page < count; ++page) {
            rows.paths << file;
            rows.pages << FramePage{page, count};
        }
    }
    return rows;
}

QString pageLabel(const QString& name, FramePage page)
{
    return page.count > 1 ? QString("%1 [%2/%3]").arg(name).arg(page.page + 1).arg(page.count) : name;
}

} // namespace torvex
