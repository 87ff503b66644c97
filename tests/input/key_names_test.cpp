#include "input/key_names.h"

#include "input/fake_hook.h"
#include "support/test.h"

using panelry::test::KeyEvent;

class KeyNamesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // The codes as libuiohook's header names them.
    void EveryNamedKeyHasItsName()
    {
        const std::vector<std::pair<const char*, std::vector<int>>> named{
            {"a", {VC_A}},
            {"b", {VC_B}},
            {"c", {VC_C}},
            {"d", {VC_D}},
            {"e", {VC_E}},
            {"f", {VC_F}},
            {"g", {VC_G}},
            {"h", {VC_H}},
            {"i", {VC_I}},
            {"j", {VC_J}},
            {"k", {VC_K}},
            {"l", {VC_L}},
            {"m", {VC_M}},
            {"n", {VC_N}},
            {"o", {VC_O}},
            {"p", {VC_P}},
            {"q", {VC_Q}},
            {"r", {VC_R}},
            {"s", {VC_S}},
            {"t", {VC_T}},
            {"u", {VC_U}},
            {"v", {VC_V}},
            {"w", {VC_W}},
            {"x", {VC_X}},
            {"y", {VC_Y}},
            {"z", {VC_Z}},
            {"0", {VC_0}},
            {"1", {VC_1}},
            {"2", {VC_2}},
            {"3", {VC_3}},
            {"4", {VC_4}},
            {"5", {VC_5}},
            {"6", {VC_6}},
            {"7", {VC_7}},
            {"8", {VC_8}},
            {"9", {VC_9}},
            {"enter", {VC_ENTER}},
            {"space", {VC_SPACE}},
            {"tab", {VC_TAB}},
            {"esc", {VC_ESCAPE}},
            {"left", {VC_LEFT}},
            {"backspace", {VC_BACKSPACE}},
            {"up", {VC_UP}},
            {"right", {VC_RIGHT}},
            {"delete", {VC_DELETE}},
            {"down", {VC_DOWN}},
            {"f1", {VC_F1}},
            {"f2", {VC_F2}},
            {"f3", {VC_F3}},
            {"f4", {VC_F4}},
            {"f5", {VC_F5}},
            {"f6", {VC_F6}},
            {"f7", {VC_F7}},
            {"f8", {VC_F8}},
            {"f9", {VC_F9}},
            {"f10", {VC_F10}},
            {"f11", {VC_F11}},
            {"f12", {VC_F12}},
            {"meta", {VC_META_L, VC_META_R}},
            {"ctrl", {VC_CONTROL_L, VC_CONTROL_R}},
            {"shift", {VC_SHIFT_L, VC_SHIFT_R}},
            {"alt", {VC_ALT_L, VC_ALT_R}}};
        std::map<int, std::string> expected;
        for (const auto& [name, codes] : named) {
            for (const int code : codes) {
                expected[code] = name;
            }
        }
        QCOMPARE(expected.size(), std::size_t{66});
        for (int code = 0; code <= 0xFFFF; ++code) {
            const auto entry = expected.find(code);
            const std::string name = entry == expected.end() ? "unknown" : entry->second;
            QCOMPARE(std::string(panelry::KeyName(static_cast<std::uint16_t>(code))), name);
        }
    }

    void AnEventIsNamedWithItsModifiersInOneOrder_data()
    {
        QTest::addColumn<int>("mask");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << 0 << VC_A << "a";
        QTest::newRow("all four") << (MASK_SHIFT_L | MASK_CTRL_L | MASK_META_L | MASK_ALT_L) << VC_F12
                                  << "ctrl+shift+alt+meta+f12";
        QTest::newRow("the right ones")
            << (MASK_SHIFT_R | MASK_CTRL_R | MASK_META_R | MASK_ALT_R) << VC_UP << "ctrl+shift+alt+meta+up";
        QTest::newRow("both of a kind: once") << (MASK_CTRL) << VC_ENTER << "ctrl+enter";
        QTest::newRow("a modifier alone") << (MASK_CTRL_L) << VC_CONTROL_L << "ctrl+ctrl";
        QTest::newRow("locks and buttons don't count")
            << (MASK_NUM_LOCK | MASK_CAPS_LOCK | MASK_SCROLL_LOCK | MASK_BUTTON1) << VC_0 << "0";
        QTest::newRow("number pad") << 0 << VC_KP_0 << "unknown";
        QTest::newRow("punctuation") << (MASK_SHIFT_L) << VC_SEMICOLON << "shift+unknown";
    }
    void AnEventIsNamedWithItsModifiersInOneOrder()
    {
        QFETCH(int, mask);
        QFETCH(int, code);
        const auto event =
            KeyEvent(EVENT_KEY_PRESSED, static_cast<std::uint16_t>(mask), static_cast<std::uint16_t>(code));
        QTEST(QString::fromStdString(panelry::KeyEventName(event)), "name");
    }

    void NormalizingKnowsAsciiAlone()
    {
        QCOMPARE(panelry::NormalizedCombination(" Ctrl\t+ SHIFT\n+\r\vZ\f"), std::string("ctrl+shift+z"));
        // Bytes that are blanks or capitals in some single-byte encoding.
        const std::string text = "\xC3\x84\xA0\x85[@`{\x01";
        QCOMPARE(panelry::NormalizedCombination(text), text);
        QCOMPARE(panelry::NormalizedCombination(" \t "), std::string());
    }
};

PANELRY_TEST(KeyNamesTest)
#include "key_names_test.moc"
