#pragma once

class QTableView;

namespace panelry::style
{

/// The look of the panels' tables, headings and rows included: all sizes come from the view's font, so call it
/// again when that changes.
void ApplyToTable(QTableView& view);

}  // namespace panelry::style
