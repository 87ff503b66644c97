#pragma once

#include <QJsonArray>

#include "ui_probe/widget_values.h"

namespace panelry
{

/// Reads widgets into JSON, bounded: at most 2,000 of them, then what is left out sets Truncated().
///
/// Ownership: holds no widget. Threading: application thread; made for one answer.
class WidgetReader
{
public:
    struct Options {
        int depth = 1'000;          ///< levels of children that are read along
        bool onScreenOnly = false;  ///< passes over what can't be seen, unless something below it can
        RowsWanted rows;
    };

    explicit WidgetReader(const Options& options) : m_options(options) {}

    /// One widget with what stands in it. Widgets that open as windows of their own are children like others.
    QJsonObject ReadTree(const QWidget& widget) { return ReadTree(widget, m_options.depth); }
    /// All of `widgets`, those that nobody can see left out where only what is on the screen is wanted.
    QJsonArray ReadTrees(const QVector<QWidget*>& widgets) { return ReadAll(widgets, m_options.depth); }
    /// The widget alone.
    QJsonObject ReadOne(const QWidget& widget);

    bool Truncated() const { return m_truncated; }

private:
    QJsonObject ReadTree(const QWidget& widget, int depth);
    template <class Widgets>
    QJsonArray ReadAll(const Widgets& widgets, int depth);
    bool IsWanted(const QWidget& widget) const;

    const Options m_options;
    int m_read = 0;
    bool m_truncated = false;
};

}  // namespace panelry
