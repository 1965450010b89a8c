// The virtual-key codes that index key_state: the Windows codes, which every host maps its keys
// onto (letters and digits are their upper-case ASCII codes).
#pragma once

enum key_code {
    KEYCODE_LBUTTON = 0x01,
    KEYCODE_RBUTTON = 0x02,
    KEYCODE_MBUTTON = 0x04,
    KEYCODE_BACKSPACE = 0x08,
    KEYCODE_TAB = 0x09,
    KEYCODE_ENTER = 0x0D,
    KEYCODE_SHIFT = 0x10,
    KEYCODE_CTRL = 0x11,
    KEYCODE_ALT = 0x12,
    KEYCODE_PAUSE = 0x13,
    KEYCODE_CAPS_LOCK = 0x14,
    KEYCODE_ESCAPE = 0x1B,
    KEYCODE_SPACE = 0x20,
    KEYCODE_PAGE_UP = 0x21,
    KEYCODE_PAGE_DOWN = 0x22,
    KEYCODE_END = 0x23,
    KEYCODE_HOME = 0x24,
    KEYCODE_LEFT = 0x25,
    KEYCODE_UP = 0x26,
    KEYCODE_RIGHT = 0x27,
    KEYCODE_DOWN = 0x28,
    KEYCODE_PRINT_SCREEN = 0x2C,
    KEYCODE_INSERT = 0x2D,
    KEYCODE_DELETE = 0x2E,
    KEYCODE_0 = 0x30, // '0' to '9'
    KEYCODE_A = 0x41, // 'A' to 'Z'
    KEYCODE_Z = 0x5A,
    KEYCODE_LEFT_SYSTEM = 0x5B,
    KEYCODE_RIGHT_SYSTEM = 0x5C,
    KEYCODE_APPLICATION = 0x5D,
    KEYCODE_NUMPAD_0 = 0x60, // keypad 0 to 9
    KEYCODE_MULTIPLY = 0x6A,
    KEYCODE_ADD = 0x6B, // keypad plus
    KEYCODE_SUBTRACT = 0x6D,
    KEYCODE_DECIMAL = 0x6E,
    KEYCODE_DIVIDE = 0x6F,
    KEYCODE_F1 = 0x70, // F1 to F24 follow in order
    KEYCODE_F10 = 0x79,
    KEYCODE_F11 = 0x7A,
    KEYCODE_F12 = 0x7B, // no game key: the windowed games save a screenshot
    KEYCODE_NUM_LOCK = 0x90,
    KEYCODE_SCROLL_LOCK = 0x91,
    KEYCODE_SEMICOLON = 0xBA,
    KEYCODE_EQUALS = 0xBB,
    KEYCODE_COMMA = 0xBC,
    KEYCODE_MINUS = 0xBD,
    KEYCODE_PERIOD = 0xBE,
    KEYCODE_SLASH = 0xBF,
    KEYCODE_BACKQUOTE = 0xC0,
    KEYCODE_LEFT_BRACKET = 0xDB,
    KEYCODE_BACKSLASH = 0xDC,
    KEYCODE_RIGHT_BRACKET = 0xDD,
    KEYCODE_QUOTE = 0xDE,
};
