#include "ui_probe/selector.h"

#include <QApplication>
#include <QSet>
#include <QWidget>
#include <algorithm>
#include <tuple>
#include <utility>

#include "ui_probe/widget_values.h"

namespace panelry
{

namespace
{

const QLatin1String kTextIs("text=");

bool InheritsClass(const QWidget& widget, const QString& name)
{
    for (const QMetaObject* meta = widget.metaObject(); meta; meta = meta->superClass()) {
        const QString own = QString::fromLatin1(meta->className());
        if (own == name || own.endsWith(QLatin1String("::") + name)) {
            return true;
        }
    }
    return false;
}

void AddWithChildren(QWidget* widget, QVector<QWidget*>& all)
{
    all.append(widget);
    for (QObject* const child : widget->children()) {
        if (child->isWidgetType()) {
            AddWithChildren(static_cast<QWidget*>(child), all);
        }
    }
}

bool HasAncestorIn(const QSet<QWidget*>& wanted, const QWidget* widget, bool parentOnly)
{
    QWidget* ancestor = widget->parentWidget();
    while (ancestor && !parentOnly && !wanted.contains(ancestor)) {
        ancestor = ancestor->parentWidget();
    }
    return ancestor && wanted.contains(ancestor);
}

}  // namespace

/// Reads a selector's text from left to right.
class SelectorReader
{
public:
    explicit SelectorReader(QString text) : m_text(std::move(text)) {}

    std::optional<Selector> Read(QString& problem)
    {
        Selector selector;
        bool child = false;
        for (SkipBlanks(); !AtEnd() && m_problem.isEmpty(); SkipBlanks()) {
            if (m_text[m_at] == QLatin1Char('>')) {
                if (child || selector.m_steps.empty()) {
                    Fail(QStringLiteral("a step is missing before \">\""));
                }
                child = true;
                ++m_at;
                continue;
            }
            selector.m_steps.push_back(ReadStep());
            selector.m_steps.back().child = child;
            child = false;
        }
        if (m_problem.isEmpty() && (child || selector.m_steps.empty())) {
            Fail(child ? QStringLiteral("a step is missing after \">\"") : QStringLiteral("it is empty"));
        }
        problem = m_problem;
        return m_problem.isEmpty() ? std::optional(selector) : std::nullopt;
    }

private:
    Selector::Step ReadStep()
    {
        Selector::Step step;
        if (Skip(kTextIs)) {
            step.text = ReadWord(QStringLiteral("["));
        } else {
            step.className = ReadClass();
            if (Skip(QLatin1String("#"))) {
                step.objectName = ReadWord(QStringLiteral("[>#"));
            }
        }
        while (m_problem.isEmpty() && Skip(QLatin1String("["))) {
            ReadBracket(step);
        }
        const bool stepEnds = AtEnd() || m_text[m_at].isSpace() || m_text[m_at] == QLatin1Char('>');
        if (m_problem.isEmpty() && !stepEnds) {
            Fail(QStringLiteral("\"%1\" isn't understood").arg(m_text.mid(m_at)));
        }
        return step;
    }

    QString ReadClass()
    {
        const int begin = m_at;
        while (!AtEnd() && (m_text[m_at].isLetterOrNumber() || m_text[m_at] == QLatin1Char('_') ||
                            m_text[m_at] == QLatin1Char(':'))) {
            ++m_at;
        }
        return begin == m_at && Skip(QLatin1String("*")) ? QString() : m_text.mid(begin, m_at - begin);
    }

    void ReadBracket(Selector::Step& step)
    {
        if (Skip(kTextIs)) {
            step.text = ReadWord(QStringLiteral("]"), true);
        } else {
            bool isNumber = false;
            const int number = ReadWord(QStringLiteral("]")).toInt(&isNumber);
            if (!isNumber || number < 0) {
                Fail(QStringLiteral("between brackets stands a number from 0 or text=..."));
            }
            step.number = number;
        }
        if (!Skip(QLatin1String("]"))) {
            Fail(QStringLiteral("a \"]\" is missing"));
        }
    }

    // In quotes, or up to a blank (unless those belong to it) or one of `ends`.
    QString ReadWord(const QString& ends, bool withBlanks = false)
    {
        if (!AtEnd() && (m_text[m_at] == QLatin1Char('"') || m_text[m_at] == QLatin1Char('\''))) {
            return ReadQuoted();
        }
        const int begin = m_at;
        while (!AtEnd() && !ends.contains(m_text[m_at]) && (withBlanks || !m_text[m_at].isSpace())) {
            ++m_at;
        }
        if (begin == m_at) {
            Fail(QStringLiteral("a name or text is missing"));
        }
        return m_text.mid(begin, m_at - begin);
    }

    QString ReadQuoted()
    {
        const int end = m_text.indexOf(m_text[m_at], m_at + 1);
        if (end < 0) {
            Fail(QStringLiteral("a quote isn't closed"));
            return {};
        }
        QString quoted = m_text.mid(m_at + 1, end - m_at - 1);
        m_at = end + 1;
        return quoted;
    }

    bool AtEnd() const { return m_at >= m_text.size(); }
    void SkipBlanks()
    {
        while (!AtEnd() && m_text[m_at].isSpace()) {
            ++m_at;
        }
    }
    bool Skip(QLatin1String expected)
    {
        const bool there = m_text.midRef(m_at).startsWith(expected);
        m_at += there ? expected.size() : 0;
        return there;
    }
    void Fail(const QString& problem)
    {
        if (m_problem.isEmpty()) {
            m_problem = QStringLiteral("bad selector: ") + problem;
        }
    }

    const QString m_text;
    int m_at = 0;
    QString m_problem;
};

std::optional<Selector> Selector::Read(const QString& text, QString& problem)
{
    return SelectorReader(text).Read(problem);
}

bool Selector::Fits(const QWidget& widget, const Step& step)
{
    return (step.className.isEmpty() || InheritsClass(widget, step.className)) &&
           (!step.objectName || widget.objectName() == *step.objectName) &&
           (!step.text || ShownText(widget) == *step.text);
}

QVector<QWidget*> Selector::Matches(bool onScreenOnly) const
{
    QVector<QWidget*> all;
    for (QWidget* const root : RootWidgets()) {
        AddWithChildren(root, all);
    }
    QVector<QWidget*> matches;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        const Step& step = m_steps[i];
        const QSet<QWidget*> above(matches.cbegin(), matches.cend());
        matches.clear();
        for (QWidget* const widget : qAsConst(all)) {
            if ((i == 0 || HasAncestorIn(above, widget, step.child)) && Fits(*widget, step)) {
                matches.append(widget);
            }
        }
        const bool last = i + 1 == m_steps.size();
        if (last && onScreenOnly) {
            matches.erase(std::remove_if(matches.begin(), matches.end(),
                                         [](const QWidget* widget) { return !IsOnScreen(*widget); }),
                          matches.end());
        }
        if (step.number) {
            matches = matches.mid(*step.number, 1);
        }
    }
    return matches;
}

QVector<QWidget*> RootWidgets()
{
    QVector<QWidget*> roots;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (!window->parentWidget()) {
            roots.append(window);
        }
    }
    const auto key = [](const QWidget* window) {
        const QPoint at = window->pos();
        return std::tuple(window->objectName(), QLatin1String(window->metaObject()->className()),
                          window->windowTitle(), at.x(), at.y(), reinterpret_cast<std::uintptr_t>(window));
    };
    std::sort(roots.begin(), roots.end(),
              [&key](const QWidget* a, const QWidget* b) { return key(a) < key(b); });
    return roots;
}

}  // namespace panelry
