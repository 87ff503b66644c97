#include "hosting/stage.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QVariant>
#include <QtTest>
#include <algorithm>
#include <cstring>

#include "bridge/host_values.h"

namespace panelry::test
{

namespace
{

FakeHost* currentHost = nullptr;

void CallHost(std::int32_t code, void* data)
{
    currentHost->codes << code;
    if (currentHost->answer) {
        currentHost->answer(code, data);
    }
}

void Append(QString* list, const QString& item)
{
    if (list) {
        *list += list->isEmpty() ? item : QLatin1Char(' ') + item;
    }
}

PluginManager::LinkKey Digit(QChar digit)
{
    return static_cast<PluginManager::LinkKey>(digit.digitValue());
}

}  // namespace

FakeModule::~FakeModule()
{
    if (dying) {
        dying();
    }
    delete widget;
    Append(deaths, name);
}

void FakeModule::MakeWidget()
{
    widget = new QWidget;
    widget->setProperty("nwidth", 200);
    widget->setProperty("nheight", 150);
}

void FakeModule::OnMessage(int msgId, void* payload)
{
    Append(log, msgId == 300 ? name : name + QLatin1Char(':') + QString::number(msgId));
    if (msgId == 102 && payload) {
        stock = *static_cast<StringMap*>(payload);
    }
    if (const auto hook = heard) {  // a copy: the module may die in it
        hook(msgId, payload);
    }
}

void EnterModuleFolder()
{
    static const QTemporaryDir folder;
    const QString library = folder.filePath(QStringLiteral("adsplugins/channel.so"));
    if (!QFile::exists(library)) {
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("adsplugins")));
        QVERIFY(QFile::copy(QStringLiteral(CHANNEL_MODULE), library));
    }
    QVERIFY(QDir::setCurrent(folder.path()));
}

Channel::Channel()
{
    for (std::uint32_t id = 1; id <= 4; ++id) {
        offers.push_back({static_cast<std::uint8_t>(id + 10), id, "key", "title", "extra"});
    }
    qApp->setProperty(kChannelProperty, QVariant::fromValue<void*>(static_cast<ModuleChannel*>(this)));
}

Channel::~Channel()
{
    qApp->setProperty(kChannelProperty, QVariant());
}

FakeHost::FakeHost()
{
    currentHost = this;
    bridge::HostCallback = &CallHost;
}

FakeHost::~FakeHost()
{
    bridge::HostCallback = nullptr;
}

Stage::Stage()
{
    EnterModuleFolder();
    m_channel.make = [this](const InstanceInfo& info) { return Next(info); };
    for (int i = 0; i < 16; ++i) {
        m_unused.push_back(std::make_unique<FakeModule>());
    }
    std::sort(m_unused.begin(), m_unused.end());
    m_stranger = std::make_unique<FakeModule>();
    m_stranger->log = &log;
    m_stranger->name = QStringLiteral("z");
    manager.LoadModules();
}

Stage::~Stage()
{
    manager.UnloadAll();
}

void Stage::Play(const QString& script)
{
    for (const QString& step : script.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        Do(step);
    }
}

void Stage::Do(const QString& step)
{
    const char first = step[0].toLatin1();
    const QChar name = step.size() > 1 ? step[1] : QChar();
    if (std::strchr("*#>=!?", first)) {
        Send(step);
    } else if (first == '-') {
        const bool elsewhere = step.size() > 2;
        const PluginManager::LinkKey key = elsewhere ? Digit(step[3]) : m_places[name].first;
        manager.RemoveModule(elsewhere ? 0 : m_places[name].second, key, Find(name));
    } else if (first == '^') {
        m_shared.push_back(Find(name)->shared_from_this());
    } else if (first == '%') {
        m_stranger.reset();
    } else if (step == QLatin1String("x")) {
        manager.UnloadAll();
    } else if (name == QLatin1Char(':')) {
        m_whenHeard[step[0]] = step.mid(2);
    } else if (name == QLatin1Char('+')) {
        Find(step[0])->dying = [this, last = step.mid(2)] { Play(last); };
    } else {
        Make(step);
    }
}

void Stage::Send(const QString& step)
{
    const bool select = step[0] == QLatin1Char('!') || step[0] == QLatin1Char('?');
    const QString road = step.mid(select ? 1 : 0);
    const int id = select ? 102 : msgId;
    void* sent = step[0] == QLatin1Char('!') ? &stock : nullptr;
    sent = select ? sent : &payload;
    FakeModule* const sender = Find(road.back());
    if (road[0] == QLatin1Char('*')) {
        manager.SendModuleMessage(id, sent, sender, -1);
    } else if (road[0] == QLatin1Char('#')) {
        manager.SendModuleMessage(id, sent, sender, road[1].digitValue());
    } else if (road[0] == QLatin1Char('>')) {
        manager.RouteToLinks(id, sent, nullptr, 0, Digit(road[1]));
    } else {
        manager.RouteToKey(id, sent, Digit(road[1]));
    }
}

void Stage::Make(const QString& step)
{
    m_name = step[0];
    const auto number = [&step](char mark, int otherwise) {
        const int at = step.indexOf(QLatin1Char(mark));
        return at < 0 ? otherwise : step[at + 1].digitValue();
    };
    if (step[1].isDigit()) {
        const auto group = static_cast<PluginManager::GroupId>(number('.', 0));
        m_places[m_name] = {Digit(step[1]), group};
        manager.CreateLinkedModule(number('=', 1), group, m_places[m_name].first, "ignored");
    } else {
        manager.CreateSubModule(number('=', 3), Find(step[1]));
    }
}

FakeModule* Stage::Find(QChar name) const
{
    const auto module = m_modules.find(name);
    return name == QLatin1Char('z') ? m_stranger.get() : module == m_modules.end() ? nullptr : module->second;
}

FakeModule* Stage::Next(const InstanceInfo& info)
{
    if (refuse) {
        return nullptr;
    }
    const auto next = fromTheTop ? std::prev(m_unused.end()) : m_unused.begin();
    FakeModule* const module = next->release();
    m_unused.erase(next);
    module->m_instance = info;
    module->name = m_name;
    module->log = &log;
    module->deaths = &deaths;
    module->heard = [this, name = m_name](int, void*) { Play(m_whenHeard[name]); };
    m_modules[m_name] = module;
    return module;
}

QString Stage::Stock(PluginManager::LinkKey key, PluginManager::GroupId group)
{
    FakeModule newcomer;
    manager.SendCurrentStock(group, key, &newcomer);
    QStringList pairs;
    for (const auto& [name, value] : newcomer.stock) {
        pairs << QString::fromStdString(name + '=' + value);
    }
    return pairs.join(QLatin1Char(' '));
}

}  // namespace panelry::test
