// SPDX-License-Identifier: MIT

#include "platform/linux/windows/LinuxTexts.h"

#include <QStringList>
#include <algorithm>

namespace tarvik::linuxdesktop {

namespace {

constexpr LinuxText replacedLines[] = {
    // The key prompt.
    {"Paste your Deepgram API key. It will be stored in the macOS Keychain.",
     "Paste your Deepgram API key. It will be stored in your settings file, which only you can "
     "read."},
    // The setup window.
    {"1.  Click Grant next to Microphone → click Allow on the system prompt.",
     "1.  Microphone not granted? Click Grant and choose one in the sound settings."},
    {"2.  Click Grant next to Accessibility → click Open System Settings → toggle TarvikDictate ON "
     "→ return here and click Restart.",
     "2.  Accessibility not granted? Click Grant."},
    {"Two ways to dictate from any text field on your Mac:",
     "Two ways to dictate from any text field:"},
    {"  •  HOLD  ⌥ Space (Option+Space)         for quick dictation — release to paste.",
     "  •  HOLD  Alt+Space  for quick dictation — release to paste."},
    {"  •  TAP   ⌥ ⇧ Space (Option+Shift+Space) for long-form — tap again to stop and paste.",
     "  •  TAP   Alt+Shift+Space  for long-form — tap again to stop and paste."},
    {"Toggle-mode auto-stops after 30 seconds of silence OR 10 minutes total — whichever comes "
     "first. Prevents forgotten sessions from quietly billing Deepgram (~$0.26/hr while open) and "
     "dribbling stray transcripts into whatever app you wandered into. The mic icon going back to "
     "grey is your cue.",
     "Toggle-mode auto-stops after 30 seconds of silence OR 10 minutes total — whichever comes "
     "first. Prevents forgotten sessions from quietly billing Deepgram (~$0.26/hr while open) and "
     "dribbling stray transcripts into whatever app you wandered into. The tray icon no longer red "
     "is your cue."},
    {"Launch at login (recommended — keeps the menu-bar icon always available)",
     "Launch at login (recommended — keeps the tray icon always available)"},
    {"After granting Accessibility, restart the app — macOS only re-reads it at launch.",
     "Changes take effect at once; no restart is needed."},
    // The menu.
    {"Hold ⌥ Space — quick dictation", "Hold Alt+Space — quick dictation"},
    {"Tap ⌥ ⇧ Space — long-form (tap again to stop)",
     "Tap Alt+Shift+Space — long-form (tap again to stop)"},
};

}  // namespace

std::span<const LinuxText> linuxTexts() {
    return replacedLines;
}

QString shownText(const std::string& coreText) {
    QStringList lines = QString::fromStdString(coreText).split(QLatin1Char('\n'));
    for (QString& line : lines) {
        const std::string coreLine = line.toStdString();
        const auto found = std::ranges::find(replacedLines, coreLine, &LinuxText::coreLine);
        if (found != std::end(replacedLines)) {
            line = QString::fromUtf8(found->shownLine.data(),
                                     static_cast<qsizetype>(found->shownLine.size()));
        }
    }
    return lines.join(QLatin1Char('\n'));
}

}  // namespace tarvik::linuxdesktop
