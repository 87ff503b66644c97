#pragma once

#include <QString>
#include <QVector>
#include <optional>
#include <vector>

class QWidget;

namespace panelry
{

/// Names widgets of the process by a path of steps: "#ticket > QPushButton[text=买入][0]".
///
/// A step is a class (its own or one it derives from, with or without the namespace; "*" for any),
/// "#objectName", "[text=...]" or a bare "text=...", or several of them without blanks between. "[n]" keeps
/// the n-th match of the path so far, from 0, in tree order. Between steps a blank leads to any depth, ">" to
/// the children. Names and texts with blanks or brackets stand in single or double quotes.
///
/// Ownership: a value; holds no widget. Threading: application thread.
/// Failures: a text that is no selector comes back as a problem.
class Selector
{
public:
    /// Nothing and a text in `problem` if `text` is no selector.
    static std::optional<Selector> Read(const QString& text, QString& problem);

    /// All that match, in tree order; with `onScreenOnly` those of them that a user could see.
    QVector<QWidget*> Matches(bool onScreenOnly) const;

private:
    friend class SelectorReader;

    struct Step {
        bool child = false;  // of a match of the step before; else anywhere below one
        QString className;   // null for any
        std::optional<QString> objectName;
        std::optional<QString> text;
        std::optional<int> number;
    };

    static bool Fits(const QWidget& widget, const Step& step);

    std::vector<Step> m_steps;
};

/// The windows without a parent, in an order that doesn't change from call to call.
QVector<QWidget*> RootWidgets();

}  // namespace panelry
