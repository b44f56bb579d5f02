// The prompt on Windows.
#include "host/browser/windows/prompt_dialog.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "host/system/secret_memory.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

constexpr UINT kAbort = WM_APP + 1;
constexpr UINT_PTR kPersonTimer = 1;
constexpr UINT_PTR kPatienceTimer = 2;
constexpr WORD kButton = 0x80;
constexpr WORD kEdit = 0x81;
constexpr WORD kText = 0x82;
// Wide enough for a line of a prompt, whatever its letters.
constexpr short kWidth = 270;
constexpr short kMargin = 7;
constexpr short kLine = 9;
constexpr std::size_t kMostLines = 24;

/// PromptEnd as DialogBoxIndirectParamW returns it: not 0 and not -1, which are errors.
INT_PTR resultOf(PromptEnd end) {
    return static_cast<INT_PTR>(end) + 1;
}

std::wstring wide(const std::string& utf8) {
    std::wstring text;
    utf8::utf8to16(utf8.begin(), utf8.end(), std::back_inserter(text));
    return text;
}

std::wstring joined(const std::vector<std::string>& lines) {
    std::wstring text;
    for (const std::string& line : lines) {
        text.append(text.empty() ? L"" : L"\r\n").append(wide(line));
    }
    return text;
}

short heightOf(const std::vector<std::string>& lines) {
    return static_cast<short>(kLine * std::min(lines.size(), kMostLines) + 4);
}

/// Whether somebody can see windows of this process.
bool hasScreen() {
    USEROBJECTFLAGS flags = {};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                     nullptr) &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

/// The parts of a dialog from its top to its bottom.
class DialogColumn {
public:
    explicit DialogColumn(const PromptLines& lines)
        : m_template(
              DS_CENTER | DS_MODALFRAME | DS_SETFOREGROUND | WS_POPUP | WS_CAPTION | WS_SYSMENU,
              WS_EX_TOPMOST | WS_EX_DLGMODALFRAME, L"ZRKey") {
        add(kText, PromptDialog::kHead, SS_LEFT | SS_NOPREFIX, heightOf(lines.head),
            joined(lines.head));
        add(kEdit, PromptDialog::kBody,
            ES_MULTILINE | ES_READONLY | WS_BORDER | WS_TABSTOP |
                (lines.body.size() > kMostLines ? WS_VSCROLL : 0U),
            heightOf(lines.body), joined(lines.body));
    }

    void addPin(const std::string& name) {
        add(kText, PromptDialog::kPinName, SS_LEFT | SS_NOPREFIX, kLine, wide(name));
        add(kEdit, PromptDialog::kPin,
            ES_PASSWORD | ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP | WS_DISABLED, 13, L"");
        add(kText, PromptDialog::kError, SS_LEFT | SS_NOPREFIX, kLine, L"");
    }

    /// @param isSafe  "Cancel" is what the enter key presses.
    const DialogTemplate& finish(const std::string& yes, bool isSafe) {
        constexpr short kButtonWidth = 60;
        constexpr short kButtonHeight = 15;
        const short left = kWidth - 2 * (kMargin + kButtonWidth);
        const DWORD yesStyle = isSafe ? BS_PUSHBUTTON : BS_DEFPUSHBUTTON;
        const DWORD noStyle = isSafe ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
        m_template.add(kButton, IDOK, yesStyle | WS_TABSTOP | WS_DISABLED,
                       {left, m_bottom, kButtonWidth, kButtonHeight}, wide(yes));
        m_template.add(kButton, IDCANCEL, noStyle | WS_TABSTOP,
                       {static_cast<short>(left + kMargin + kButtonWidth), m_bottom, kButtonWidth,
                        kButtonHeight},
                       L"Cancel");
        m_template.setSize(kWidth, static_cast<short>(m_bottom + kButtonHeight + kMargin));
        return m_template;
    }

private:
    void add(WORD kind, WORD id, DWORD style, short height, const std::wstring& text) {
        m_template.add(kind, id, style, {kMargin, m_bottom, kWidth - 2 * kMargin, height}, text);
        m_bottom = static_cast<short>(m_bottom + height + kMargin / 2);
    }

    DialogTemplate m_template;
    short m_bottom = kMargin;
};

}  // namespace

PromptEnd PromptDialog::askPin(const PinQuestion& question, Pin& pin) {
    DialogColumn column(linesOf(question));
    column.addPin(std::string("PIN").append(question.lengths.text()).append(":"));
    m_pin = &pin;
    const PromptEnd end = show(column.finish("OK", false));
    m_pin = nullptr;
    return end;
}

PromptEnd PromptDialog::confirm(const Confirmation& confirmation) {
    DialogColumn column(linesOf(confirmation));
    return show(column.finish(confirmation.yes, true));
}

PromptEnd PromptDialog::show(const DialogTemplate& dialog) {
    if (!hasScreen()) {
        return PromptEnd::kUnavailable;
    }
    const INT_PTR result =
        DialogBoxIndirectParamW(GetModuleHandleW(nullptr), dialog.get(), nullptr,
                                &PromptDialog::handle, reinterpret_cast<LPARAM>(this));
    const std::lock_guard lock(m_mutex);
    m_window = nullptr;
    return result <= 0 ? PromptEnd::kUnavailable : static_cast<PromptEnd>(result - 1);
}

INT_PTR CALLBACK PromptDialog::handle(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, GWLP_USERDATA, data);
        reinterpret_cast<PromptDialog*>(data)->open(window);
        return FALSE;
    }
    auto* const dialog = reinterpret_cast<PromptDialog*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return dialog ? dialog->handle(message, word) : FALSE;
}

void PromptDialog::open(HWND window) {
    {
        const std::lock_guard lock(m_mutex);
        m_window = window;
        if (m_isAborted) {
            end(PromptEnd::kAborted);
            return;
        }
    }
    m_isPatient = false;
    SetTimer(window, kPersonTimer, static_cast<UINT>(m_times.person.count()), nullptr);
    SetTimer(window, kPatienceTimer, static_cast<UINT>(m_times.patience.count()), nullptr);
    SendDlgItemMessageW(window, kPin, EM_SETLIMITTEXT, Pin::kCapacity, 0);
    SetForegroundWindow(window);
    // The text takes keys that are meant for the page and does nothing with them.
    SetFocus(GetDlgItem(window, m_pin ? static_cast<int>(kBody) : IDCANCEL));
}

INT_PTR PromptDialog::handle(UINT message, WPARAM word) {
    switch (message) {
        case WM_COMMAND:
            if (LOWORD(word) == kPin && HIWORD(word) == EN_CHANGE) {
                enableYes();
            } else if (HIWORD(word) == BN_CLICKED) {
                press(LOWORD(word));
            }
            return TRUE;
        case WM_TIMER:
            if (word == kPersonTimer) {
                end(PromptEnd::kTimedOut);
            } else {
                becomeReady();
            }
            return TRUE;
        case kAbort:
            end(PromptEnd::kAborted);
            return TRUE;
        default:
            return FALSE;
    }
}

void PromptDialog::becomeReady() {
    KillTimer(m_window, kPatienceTimer);
    m_isPatient = true;
    const HWND box = GetDlgItem(m_window, kPin);
    if (m_pin) {
        EnableWindow(box, TRUE);
    }
    if (m_pin && GetFocus() == GetDlgItem(m_window, kBody)) {
        SetFocus(box);
    }
    enableYes();
}

void PromptDialog::enableYes() {
    const bool isReady =
        m_isPatient && (!m_pin || GetWindowTextLengthW(GetDlgItem(m_window, kPin)) > 0);
    EnableWindow(GetDlgItem(m_window, IDOK), isReady);
}

void PromptDialog::press(WORD button) {
    if (button == IDCANCEL) {
        end(PromptEnd::kCancelled);
    } else if (button == IDOK && IsWindowEnabled(GetDlgItem(m_window, IDOK))) {
        if (!m_pin || takePin()) {
            end(PromptEnd::kAnswered);
        } else {
            SetDlgItemTextW(m_window, kError, L"This PIN is too long.");
        }
    }
}

/// @return false when it does not fit.
bool PromptDialog::takePin() {
    std::array<wchar_t, Pin::kCapacity + 1> units = {};
    const SecretMemory protection(units.data(), sizeof units);
    const UINT count =
        GetDlgItemTextW(m_window, kPin, units.data(), static_cast<int>(units.size()));
    std::array<char, 3 * Pin::kCapacity> bytes = {};
    const SecretMemory bytesProtection(bytes.data(), bytes.size());
    // A lone surrogate is an error.
    const int size =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, units.data(), static_cast<int>(count),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    Pin entered;
    const bool fits = size > 0 && std::all_of(bytes.begin(), bytes.begin() + size,
                                              [&](char byte) { return entered.append(byte); });
    if (fits) {
        *m_pin = std::move(entered);
    }
    erasePin();
    secureErase(units.data(), sizeof units);
    secureErase(bytes.data(), bytes.size());
    return fits;
}

/// The control keeps its own copy: it is overwritten by as many other characters.
void PromptDialog::erasePin() {
    const HWND box = GetDlgItem(m_window, kPin);
    const std::wstring other(static_cast<std::size_t>(GetWindowTextLengthW(box)), L'*');
    SetWindowTextW(box, other.c_str());
    SetWindowTextW(box, L"");
    SendMessageW(box, EM_EMPTYUNDOBUFFER, 0, 0);
}

void PromptDialog::end(PromptEnd end) {
    if (m_pin) {
        erasePin();
    }
    EndDialog(m_window, resultOf(end));
}

void PromptDialog::abort() {
    const std::lock_guard lock(m_mutex);
    m_isAborted = true;
    if (m_window) {
        PostMessageW(m_window, kAbort, 0, 0);
    }
}

void PromptDialog::resume() {
    const std::lock_guard lock(m_mutex);
    m_isAborted = false;
}

std::unique_ptr<Prompt> makePrompt(const std::string&) {
    return std::make_unique<PromptDialog>();
}

}  // namespace zr::host
