#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>

namespace panelry
{

/// One line at a panel's foot: how things stand, or for some seconds what has just gone wrong.
///
/// Ownership: a plain child widget. Threading: application thread.
/// Failures: a text that doesn't fit is elided; the last problem stays readable as the tool tip.
class StatusLine : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString text READ Shown)

public:
    explicit StatusLine(QWidget* parent = nullptr);

    /// How things stand.
    void SetText(const QString& text);

    /// Shows a problem, with its time, in place of the text for ten seconds and counts it.
    void Warn(const QString& problem);

    /// What the line shows now, unelided.
    QString Shown() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    QString m_problem;  // with its time
    int m_problems = 0;
    QTimer m_problemShown;
};

}  // namespace panelry
