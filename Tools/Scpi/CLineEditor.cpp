#include "CLineEditor.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <histedit.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace ZoVelkor::Tools
{

namespace
{

constexpr int kHistoryLines = 1000;
constexpr std::size_t kDefaultColumns = 80;

/// What can follow, in columns below the line.
void ListChoices(editline* editor, const std::vector<std::string>& choices)
{
    std::size_t width = 0;
    for (const std::string& choice : choices)
    {
        width = std::max(width, choice.size() + 2);
    }
    int columns = 0;
    char name[] = "co";
    el_get(editor, EL_GETTC, name, &columns);
    const std::size_t perLine =
        std::max<std::size_t>((columns > 0 ? static_cast<std::size_t>(columns) : kDefaultColumns) / width, 1);
    for (std::size_t i = 0; i < choices.size(); ++i)
    {
        fmt::print("{}{:<{}}", i % perLine == 0 ? "\n" : "", choices[i], width);
    }
    fmt::print("\n");
    std::fflush(stdout);
}

} // namespace

void CLineEditor::EditorEnd::operator()(editline* editor) const noexcept
{
    el_end(editor);
}

void CLineEditor::HistoryEnd::operator()(struct history* lines) const noexcept
{
    history_end(lines);
}

CLineEditor::CLineEditor(std::string prompt, std::string historyFile, CHeaderCompletion completion)
    : m_prompt(std::move(prompt)),
      m_historyFile(std::move(historyFile)),
      m_completion(std::move(completion)),
      m_history(history_init()),
      m_editor(el_init("zo", stdin, stdout, stderr))
{
    editline* const editor = m_editor.get();
    if (editor == nullptr || m_history == nullptr)
    {
        throw std::runtime_error("the terminal cannot be used");
    }
    LoadHistory();
    el_set(editor, EL_CLIENTDATA, this);
    el_set(editor, EL_PROMPT, &CLineEditor::Prompt);
    el_set(editor, EL_HIST, &::history, m_history.get());
    el_set(editor, EL_EDITOR, "emacs");
    // Narrow names would be copied and never freed.
    el_wset(editor, EL_ADDFN, L"zo-complete", L"Complete the header", &CLineEditor::OnTab);
    el_wset(editor, EL_ADDFN, L"zo-cancel", L"Throw the line away", &CLineEditor::OnInterrupt);
    el_wset(editor, EL_ADDFN, L"zo-suspend", L"Stop the program", &CLineEditor::OnSuspend);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(editor, nullptr);
    el_set(editor, EL_BIND, "^I", "zo-complete", nullptr);
    el_set(editor, EL_BIND, "^C", "zo-cancel", nullptr);
    el_set(editor, EL_BIND, "^Z", "zo-suspend", nullptr);
    // While a line is edited the keys are characters; outside, they are the signals.
    el_set(editor, EL_SETTY, "-d", "-isig", nullptr);
}

CLineEditor::~CLineEditor() = default;

CLineEditor& CLineEditor::Of(editline* editor)
{
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    return *static_cast<CLineEditor*>(data);
}

char* CLineEditor::Prompt(editline* editor)
{
    return Of(editor).m_prompt.data();
}

unsigned char CLineEditor::OnTab(editline* editor, int)
{
    const LineInfo* const line = el_line(editor);
    const std::string_view before(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    const Completion completion = Of(editor).m_completion.Complete(before);
    const bool isFurther =
        !completion.text.empty() && completion.text != before.substr(before.size() - completion.replaced);
    if (isFurther)
    {
        el_deletestr(editor, static_cast<int>(completion.replaced));
        el_insertstr(editor, completion.text.c_str());
        return CC_REFRESH;
    }
    if (completion.choices.empty())
    {
        return CC_REFRESH_BEEP;
    }
    ListChoices(editor, completion.choices);
    return CC_REDISPLAY;
}

unsigned char CLineEditor::OnInterrupt(editline* editor, int)
{
    Of(editor).m_isCancelled = true;
    std::fputs("^C\n", stdout);
    return CC_NEWLINE;
}

unsigned char CLineEditor::OnSuspend(editline* editor, int)
{
    el_set(editor, EL_PREP_TERM, 0);
    std::raise(SIGTSTP);
    el_set(editor, EL_PREP_TERM, 1);
    return CC_REDISPLAY;
}

std::optional<std::string> CLineEditor::ReadLine()
{
    m_isCancelled = false;
    el_resize(m_editor.get());
    // Before the prompt is shown: what is typed at once would still be taken by the terminal itself.
    el_set(m_editor.get(), EL_PREP_TERM, 1);
    int count = 0;
    const char* const text = el_gets(m_editor.get(), &count);
    if (m_isCancelled)
    {
        return "";
    }
    if (text == nullptr || count <= 0)
    {
        return std::nullopt;
    }
    std::string line(text, static_cast<std::size_t>(count));
    line.erase(line.find_last_not_of("\r\n") + 1);
    Remember(line);
    return line;
}

void CLineEditor::LoadHistory()
{
    HistEvent event{};
    history(m_history.get(), &event, H_SETSIZE, kHistoryLines);
    history(m_history.get(), &event, H_SETUNIQUE, 1);
    if (!m_historyFile.empty())
    {
        history(m_history.get(), &event, H_LOAD, m_historyFile.c_str());
    }
}

void CLineEditor::Remember(const std::string& line)
{
    if (line.find_first_not_of(" \t") == std::string::npos)
    {
        return;
    }
    HistEvent event{};
    history(m_history.get(), &event, H_ENTER, line.c_str());
    if (!m_historyFile.empty())
    {
        history(m_history.get(), &event, H_SAVE, m_historyFile.c_str());
    }
}

} // namespace ZoVelkor::Tools
