#include "host_tables/table_style.h"

#include <QHeaderView>
#include <QTableView>

#include "common/panel_style.h"

namespace panelry::style
{

void ApplyToTable(QTableView& view)
{
    const QFontMetrics metrics = view.fontMetrics();
    Apply(&view);
    view.setFrameShape(QFrame::NoFrame);
    view.setShowGrid(false);
    view.setWordWrap(false);
    view.setTabKeyNavigation(false);  // Tab leaves the table
    view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    const int padding = metrics.averageCharWidth();
    const QString sheet = QStringLiteral(
                              "QTableView::item { padding: 0 %1px; } "
                              "QTableCornerButton::section { background: %2; border: none; } ")
                              .arg(padding)
                              .arg(QColor(kBand).name()) +
                          HeaderSheet(padding);
    if (view.styleSheet() != sheet) {  // setting it brings another change of fonts
        view.setStyleSheet(sheet);
    }
    view.horizontalHeader()->setHighlightSections(false);
    view.verticalHeader()->setHighlightSections(false);
    view.verticalHeader()->setMinimumSectionSize(1);
    view.verticalHeader()->setDefaultSectionSize(metrics.height() * 8 / 5);
    view.horizontalHeader()->setFixedHeight(metrics.height() * 7 / 4);
}

}  // namespace panelry::style
