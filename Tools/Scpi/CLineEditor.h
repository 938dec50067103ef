#pragma once

#include "CHeaderCompletion.h"

#include <memory>
#include <optional>
#include <string>

struct editline;
struct history;

namespace ZoVelkor::Tools
{

/// Lets a person edit lines on the terminal, with history and completion of headers.
///
/// At the prompt Ctrl-C throws the line away and is no signal; Ctrl-D on an empty line ends. `~/.editrc`
/// counts. Threads: one at a time; one editor at a time, because there is one terminal.
class CLineEditor
{
public:
    /// @param historyFile  lines of earlier times, each new one is added; empty for none. One that cannot be
    ///                     read or written is no failure.
    CLineEditor(std::string prompt, std::string historyFile, CHeaderCompletion completion);
    CLineEditor(const CLineEditor&) = delete;
    CLineEditor& operator=(const CLineEditor&) = delete;
    ~CLineEditor();

    /// @return a line without its end, empty after Ctrl-C; nothing at the end of the input
    std::optional<std::string> ReadLine();

private:
    struct EditorEnd
    {
        void operator()(editline* editor) const noexcept;
    };
    struct HistoryEnd
    {
        void operator()(struct history* lines) const noexcept;
    };

    static CLineEditor& Of(editline* editor);
    static char* Prompt(editline* editor);
    static unsigned char OnTab(editline* editor, int);
    static unsigned char OnInterrupt(editline* editor, int);
    static unsigned char OnSuspend(editline* editor, int);
    void LoadHistory();
    void Remember(const std::string& line);

    std::string m_prompt;
    const std::string m_historyFile;
    const CHeaderCompletion m_completion;
    bool m_isCancelled = false;
    std::unique_ptr<struct history, HistoryEnd> m_history;
    std::unique_ptr<editline, EditorEnd> m_editor;
};

} // namespace ZoVelkor::Tools
