// A pinentry that answers as a file says: it stands for the person and for the program. On Linux only,
// where prompts are those of a pinentry.
//
// It is started by a path of the test's own, a link or a copy. Beside that path PATH are
//   PATH.script  what it does; one action a line:
//       pin TEXT     answers the next GETPIN, after a little more than a second, as a person would: the
//                    host drops an answer that comes sooner
//       yes          answers the next CONFIRM, in the same way
//       cancel, no, timeout, no-display   the answer is that error
//       wait         never answers, and ends when it is killed
//       sleep MS     waits, then does the action of the next line
//       die          ends without an answer
//       flood        writes without an end
//       raw TEXT     writes the text, in which "\n" is a line end and "\r" a carriage return
//     Each GETPIN and each CONFIRM takes the next line, also in a later process; the last line counts
//     for all later ones. "at COMMAND ACTION" is for another command, for example SETDESC, for the
//     greeting (START) or the end of its input (END); such a line counts always. "mute-term" makes it
//     ignore SIGTERM, "hurry" makes it answer "pin" and "yes" at once.
//   PATH.asked   what it was asked: each line of the protocol that it got, as it came. A process begins
//     with "START" and its number, and, when the script has a line "environment", its variables.
//   PATH.next    how many lines it has taken.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

/// A person's, before an answer.
constexpr std::chrono::milliseconds kReading{1050};
constexpr const char* kNotUnderstood = "ERR 83886355 Unknown IPC command <Test>";

class ScriptedPinentry {
public:
    explicit ScriptedPinentry(std::string path) : m_path(std::move(path)) {
        std::ifstream script(m_path + ".script");
        for (std::string line; std::getline(script, line);) {
            const std::size_t behindCommand = line.find(' ', 3);
            if (line.starts_with("at ") && behindCommand != std::string::npos) {
                m_events.push_back(
                    {line.substr(3, behindCommand - 3), line.substr(behindCommand + 1)});
            } else if (line == "environment") {
                m_recordsVariables = true;
            } else if (line == "hurry") {
                m_isInAHurry = true;
            } else if (line == "mute-term") {
                std::signal(SIGTERM, SIG_IGN);
            } else if (!line.empty()) {
                m_prompts.push_back(line);
            }
        }
    }

    int run() {
        note("START " + std::to_string(getpid()));
        for (char** variable = environ; m_recordsVariables && *variable; ++variable) {
            note(std::string("ENVIRONMENT ") + *variable);
        }
        if (!doEvent("START")) {
            say("OK Pleased to meet you");
        }
        for (std::string line; std::getline(std::cin, line);) {
            note(line);
            const std::string command = line.substr(0, line.find(' '));
            if (command == "BYE") {
                say("OK closing connection");
                break;
            }
            answer(command, line);
        }
        note("END");
        doEvent("END");
        return 0;
    }

private:
    struct Event {
        std::string command;
        std::string action;
    };

    void note(const std::string& line) {
        std::ofstream(m_path + ".asked", std::ios::app) << line << '\n';
    }
    static void say(const std::string& line) { std::cout << line << '\n' << std::flush; }

    void answer(const std::string& command, const std::string& line) {
        if (doEvent(command)) {
            return;
        }
        if (command == "GETPIN" || command == "CONFIRM") {
            prompt(command);
        } else if (line == "GETINFO flavor") {
            say("D gtk2\nOK");
        } else if (command.starts_with("SET") || command == "OPTION") {
            say("OK");
        } else {
            say(kNotUnderstood);
        }
    }

    bool doEvent(const std::string& command) {
        for (const Event& event : m_events) {
            if (event.command == command) {
                act(event.action, command);
                return true;
            }
        }
        return false;
    }

    std::size_t taken() const {
        std::size_t count = 0;
        std::ifstream(m_path + ".next") >> count;
        return count;
    }

    void prompt(const std::string& command) {
        bool isDone = false;
        while (!isDone && !m_prompts.empty()) {
            const std::size_t count = taken();
            const std::string action = m_prompts[std::min(count, m_prompts.size() - 1)];
            std::ofstream(m_path + ".next") << count + 1;
            isDone = !action.starts_with("sleep ") || count + 1 >= m_prompts.size();
            if (!m_isInAHurry && (action.starts_with("pin ") || action == "yes")) {
                std::this_thread::sleep_for(kReading);
            }
            act(action, command);
        }
        if (m_prompts.empty()) {
            say("ERR 83886179 Operation cancelled <Test>");
        }
    }

    static void act(const std::string& action, const std::string& command) {
        const std::size_t space = action.find(' ');
        const std::string name = action.substr(0, space);
        const std::string text = space == std::string::npos ? "" : action.substr(space + 1);
        if (name == "pin" && command == "GETPIN") {
            say("D " + text + "\nOK");
        } else if (name == "yes" && command == "CONFIRM") {
            say("OK");
        } else if (name == "cancel") {
            say("ERR 83886179 Operation cancelled <Test>");
        } else if (name == "no") {
            say("ERR 83886194 Not confirmed <Test>");
        } else if (name == "timeout") {
            say("ERR 83886142 Timeout <Test>");
        } else if (name == "no-display") {
            say("ERR 83918950 Inappropriate ioctl for device <Test>");
        } else if (name == "sleep") {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(text)));
        } else {
            misbehave(name, text);
        }
    }

    static void misbehave(const std::string& name, const std::string& text) {
        if (name == "wait") {
            for (;;) {
                pause();
            }
        } else if (name == "die") {
            _exit(3);
        } else if (name == "flood") {
            for (;;) {
                say("S FLOOD " + std::string(900, 'x'));
            }
        } else if (name == "raw") {
            std::cout << withLineEnds(text) << std::flush;
        } else {
            say("ERR 83886359 The script has no answer to this <Test>");
        }
    }

    static std::string withLineEnds(std::string text) {
        for (std::size_t i = 0; (i = text.find('\\', i)) != std::string::npos; ++i) {
            const std::string pair = text.substr(i, 2);
            if (pair == "\\n" || pair == "\\r") {
                text.replace(i, 2, pair == "\\n" ? "\n" : "\r");
            }
        }
        return text;
    }

    std::string m_path;
    std::vector<std::string> m_prompts;
    std::vector<Event> m_events;
    bool m_recordsVariables = false;
    bool m_isInAHurry = false;
};

}  // namespace

int main(int, char** argv) {
    return ScriptedPinentry(argv[0]).run();
}
