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
    const QString sheet =
        QStringLiteral(
            "QTableView::item { padding: 0 %1px; } "
            "QTableCornerButton::section { background: %2; border: none; } "
            "QHeaderView { background: %2; border: none; } "
            "QHeaderView::section { background: %2; color: %3; border: none; padding: 0 %1px; } "
            "QHeaderView::section:horizontal { border-bottom: 1px solid %4; }")
            .arg(metrics.averageCharWidth() * 2 / 3)
            .arg(QColor(kBand).name(), QColor(kMutedText).name(), QColor(kHairline).name());
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
