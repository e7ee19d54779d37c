// The terminal: single keys, and a line that changes in its place.
#pragma once

#include <QString>

#include <cstdio>

// Keys without a line's end and without being shown, while one lives and standard input is a terminal. The
// terminal is as before while the program is stopped, and afterwards.
class Keyboard
{
public:
    enum class Key
    {
        None,
        Enter,
        Escape
    };

    Keyboard();
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    bool isThere() const { return m_isThere; }

    // Readable when a key was pressed; -1 without a terminal.
    int descriptor() const;

    // The last of the known keys that were pressed. Does not wait.
    Key read();

private:
    const bool m_isThere;
    bool m_isGone = false; // it was there
};

// For a signal handler: the program ends here and now.
void restoreTerminal() noexcept;

bool isTerminal(std::FILE* file);

// Shows nothing where the file is no terminal.
class StatusLine
{
public:
    explicit StatusLine(std::FILE* file);
    ~StatusLine() { clear(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void show(const QString& text);
    void clear() { show({}); }

private:
    std::FILE* m_file; // null: shows nothing
    int m_shown = 0;   // characters on the screen
};
