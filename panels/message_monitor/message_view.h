#pragma once

#include <QPlainTextEdit>
#include <QString>
#include <QStringList>

namespace panelry
{

/// The lines of the monitor: read-only text, one block a message, the newest at the end.
///
/// Follows the newest line as long as the end is in view; who scrolls up reads in peace, also while old lines
/// fall off the top. Ownership: a plain child widget. Threading: application thread.
class MessageView : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// Keeps the newest `mostLines` lines.
    explicit MessageView(int mostLines, QWidget* parent = nullptr);

    void Append(const QStringList& lines);

    /// The end is in view.
    bool IsFollowing() const;
    void ShowNewest();

    int Lines() const;
    /// What is selected, or else everything, with line feeds.
    QString TextToCopy() const;

Q_SIGNALS:
    /// The keys for copying were pressed here.
    void CopyWanted();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace panelry
