#pragma once

#include <QPointer>
#include <QString>
#include <QVector>
#include <QWidget>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "hosting/modules/module_channel.h"
#include "hosting/plugin_manager.h"

namespace panelry::test
{

/// A module that says what happens to it. Its widget, if it was given one, goes with it.
class FakeModule : public ModuleBase
{
public:
    ~FakeModule() override;

    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return widget; }
    void MakeWidget();  ///< of 200 by 150

    QString name;
    QPointer<QWidget> widget;
    StringMap stock;  ///< the last one that came with message 102

    QString* log = nullptr;     ///< gets the name for message 300, "name:id" for any other number
    QString* deaths = nullptr;  ///< gets the name
    std::function<void(int msgId, void* payload)> heard;
    std::function<void()> dying;
};

/// A module without a widget that is a QObject, with the two parts at different addresses.
class ObjectModule : public QObject, public FakeModule
{
};

/// A folder with the channel library in its "adsplugins", which is the current directory from then on.
void EnterModuleFolder();

/// The channel of the library, for as long as the object lives. Offers the modules 1 to 4.
class Channel : public ModuleChannel
{
public:
    Channel();
    ~Channel();
    Q_DISABLE_COPY(Channel)
};

/// The host: what the library calls back with, for as long as the object lives.
class FakeHost
{
public:
    FakeHost();
    ~FakeHost();
    Q_DISABLE_COPY(FakeHost)

    QVector<int> codes;
    std::function<void(int code, void* data)> answer;
};

/// A plug-in manager of its own, and a small language for what happens to it. Modules are letters, frames are
/// digits (0: none), steps are separated by blanks:
///
///   a7  a7.2  a7=4   a, of id 1, in frame 7; in group 2 there; of id 4
///   ba  b_  bz       b, of id 3, a sub-module of a; of null; of z, which was never filed
///   -a  -a@8         a is removed; by the key of frame 8
///   *a  *            a sends message 300 along its link; nobody sends it
///   #4a  #4          the same to all modules of id 4
///   >7  =7           RouteToLinks and RouteToKey to frame 7
///   !*a  ?*a         any of these four with message 102 and a stock; with message 102 and null
///   ^a  %  x         somebody shares a; z dies; UnloadAll
///   a:STEP  a+STEP   the step that is done whenever a hears something; when it dies
class Stage
{
public:
    Stage();
    ~Stage();

    void Play(const QString& script);

    FakeModule& operator[](char name) const { return *m_modules.at(QLatin1Char(name)); }

    /// The stock of a group as a new module gets it: "key=value" of each.
    QString Stock(PluginManager::LinkKey key, PluginManager::GroupId group = 0);

    bool fromTheTop = false;  ///< new modules' addresses go down, not up
    bool refuse = false;      ///< CreateModule yields null
    int msgId = 300;
    QString log;     ///< who heard what, in that order
    QString deaths;  ///< who was destroyed, in that order
    int payload = 0;
    StringMap stock{{"market", "SH"}, {"stockcode", "600019"}, {"volume", "7"}};

private:
    void Do(const QString& step);
    void Send(const QString& step);
    void Make(const QString& step);
    FakeModule* Find(QChar name) const;
    FakeModule* Next(const InstanceInfo& info);

    Channel m_channel;
    std::deque<std::unique_ptr<FakeModule>> m_unused;  // by address
    std::unique_ptr<FakeModule> m_stranger;
    QChar m_name;
    std::map<QChar, FakeModule*> m_modules;
    std::map<QChar, std::pair<PluginManager::LinkKey, PluginManager::GroupId>> m_places;
    std::map<QChar, QString> m_whenHeard;
    std::vector<std::shared_ptr<ModuleBase>> m_shared;

public:
    PluginManager manager;
};

/// What the offscreen platform says of windows that are shown.
inline constexpr char kOffscreenWarning[] = "This plugin does not support (propagateSizeHints|raise)";

}  // namespace panelry::test
