#include "cli/Manual.h"
#include "cli/Colour.h"
#include "cli/Topics.h"
#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace pixkit::cli {

namespace {

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

// Those that have a name, not a place in the line.
std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

// "-o", "--output"
std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back(std::string("-").append(name));
    for (const std::string& name : option.get_lnames())
        names.push_back(std::string("--").append(name));
    return names;
}

// What stands behind it in the help; empty for a flag.
std::string argumentOf(const CLI::Option& option) {
    return option.get_type_size() == 0 ? option.get_option_text() : option.get_type_name();
}

// Of an argument whose description says all that it may be, as in "size|down", the words; else none.
std::vector<std::string> choicesOf(const CLI::Option& option) {
    const std::string argument = argumentOf(option);
    if (argument.find('|') == std::string::npos ||
        std::ranges::any_of(argument, [](char c) { return c != '|' && (c < 'a' || c > 'z') && (c < '0' || c > '9'); }))
        return {};
    return CLI::detail::split(argument, '|');
}

std::string replaced(std::string_view text, char from, std::string_view to) {
    std::string result;
    for (const char c : text)
        result += c == from ? std::string(to) : std::string(1, c);
    return result;
}

std::string oneLine(const std::string& text) {
    return replaced(text, '\n', " ");
}

// --- man

// Text of a page, in which backslashes, hyphens and dots at the beginning of a line mean something.
std::string roff(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const bool isAtStart = result.empty() || result.back() == '\n';
        if (isAtStart && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return result;
}

// Lines as they are.
void writeVerbatim(std::ostream& out, std::string_view text) {
    out << ".PP\n.nf\n" << roff(text) << (text.ends_with('\n') ? "" : "\n") << ".fi\n";
}

void writeOption(std::ostream& out, const CLI::Option& option) {
    out << ".TP\n";
    const char* separator = "";
    for (const std::string& name : namesOf(option)) {
        out << separator << "\\fB" << roff(name) << "\\fR";
        separator = ", ";
    }
    const std::string argument = argumentOf(option);
    if (!argument.empty()) out << (argument.starts_with('[') ? "" : " ") << "\\fI" << roff(argument) << "\\fR";
    out << '\n' << roff(oneLine(option.get_description())) << '\n';
}

void writeCommand(std::ostream& out, const CLI::App& command) {
    out << ".SH pixkit " << command.get_name() << '\n' << roff(oneLine(command.get_description())) << ".\n";
    for (const CLI::Option* option : command.get_options())
        if (option->get_positional()) {
            out << ".TP\n\\fI" << roff(option->get_name(true)) << "\\fR\n"
                << roff(oneLine(option->get_description())) << '\n';
        }
    std::string group;
    for (const std::string& each : command.get_groups()) {
        for (const CLI::Option* option : optionsOf(command)) {
            if (option->get_group() != each || each.empty()) continue;
            if (group != each) out << ".SS " << roff(group = each) << '\n';
            writeOption(out, *option);
        }
    }
    writeVerbatim(out, command.get_footer());
}

// --- completions

std::string joined(const std::vector<std::string>& words) {
    return CLI::detail::join(words, " ");
}

bool isColour(const CLI::Option& option) {
    return argumentOf(option).starts_with("COLOUR");
}

std::string colours() {
    std::string names = "transparent";
    for (const std::string_view name : colourNames())
        names.append(" ").append(name);
    return names;
}

bool isHelp(const CLI::App& command) {
    return command.get_name() == "help";
}

void writeBash(std::ostream& out, const CLI::App& app) {
    std::vector<std::string> commandNames;
    // "--to=p" comes as three words.
    out << "_pixkit() {\n    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} options= words=\n"
           "    [ \"$before\" != = ] || before=${COMP_WORDS[COMP_CWORD-2]}\n    [ \"$word\" != = ] || word=\n"
           "    local colours='"
        << colours() << "'\n    case ${COMP_WORDS[1]} in\n";
    for (const CLI::App* command : commandsOf(app)) {
        commandNames.push_back(command->get_name());
        std::vector<std::string> names;
        out << "    " << command->get_name() << ")\n";
        if (isHelp(*command)) out << "        [ \"$COMP_CWORD\" != 2 ] || words='" << joined(helpTopics(app)) << "'\n";
        out << "        case $before in\n";
        for (const CLI::Option* option : optionsOf(*command)) {
            const std::vector<std::string> own = namesOf(*option), choices = choicesOf(*option);
            names.insert(names.end(), own.begin(), own.end());
            if (choices.empty() && !isColour(*option)) continue;
            out << "        " << CLI::detail::join(own, "|")
                << ") words=" << (isColour(*option) ? "$colours" : std::string("'").append(joined(choices)).append("'"))
                << " ;;\n";
        }
        out << "        esac\n        options='" << joined(names) << "' ;;\n";
    }
    out << "    esac\n"
           "    if [ \"$COMP_CWORD\" = 1 ]; then\n        words='"
        << joined(commandNames)
        << " --help --version'\n"
           "    elif [ \"${word#-}\" != \"$word\" ]; then\n        words=$options\n    fi\n"
           "    COMPREPLY=()\n    if [ -n \"$words\" ]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n    fi\n}\n"
           "complete -o bashdefault -o default -F _pixkit pixkit\n";
}

// A text between apostrophes for _arguments, where brackets and colons mean something.
std::string zshText(const std::string& text) {
    std::string result;
    for (const char c : oneLine(text)) {
        if (c == '\'') {
            result += "'\\''";
        } else {
            if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
            result += c;
        }
    }
    return result;
}

std::string zshAction(const CLI::Option& option) {
    const std::vector<std::string> choices = choicesOf(option);
    if (!choices.empty()) return std::string("(").append(joined(choices)).append(")");
    return isColour(option) ? "_pixkit_colours" : argumentOf(option) == "FOLDER" ? "_files -/" : "_files";
}

void writeZsh(std::ostream& out, const CLI::App& app) {
    out << "#compdef pixkit\n_pixkit_colours() {\n    compadd \"$@\" -- " << colours()
        << "\n}\n_pixkit() {\n    local -a commands=(\n";
    for (const CLI::App* command : commandsOf(app))
        out << "        '" << command->get_name() << ':' << zshText(command->get_description()) << "'\n";
    out << "    )\n    if (( CURRENT == 2 )); then\n        _describe command commands\n        return\n    fi\n"
           "    local command=$words[2]\n    shift words\n    (( CURRENT-- ))\n    case $command in\n";
    for (const CLI::App* command : commandsOf(app)) {
        out << "    " << command->get_name() << ")\n        _arguments -S \\\n";
        for (const CLI::Option* option : optionsOf(*command)) {
            const std::string argument = argumentOf(*option);
            for (const std::string& name : namesOf(*option)) {
                out << "            '*" << name << '[' << zshText(option->get_description()) << ']';
                if (!argument.empty() && !argument.starts_with('['))
                    out << ':' << zshText(argument) << ':' << zshAction(*option);
                out << "' \\\n";
            }
        }
        out << (isHelp(*command)
                    ? std::string("            ':topic:(").append(joined(helpTopics(app))).append(")' ;;\n")
                    : "            '*:file:_files' ;;\n");
    }
    out << "    esac\n}\n_pixkit \"$@\"\n";
}

// What fish is told of an option's values.
std::string fishValues(const CLI::Option& option) {
    const std::vector<std::string> choices = choicesOf(option);
    const std::string argument = argumentOf(option);
    if (!choices.empty()) return std::string(" -x -a '").append(joined(choices)).append("'");
    if (isColour(option)) return " -x -a '(__pixkit_colours)'";
    if (argument == "FOLDER") return " -x -a '(__fish_complete_directories)'";
    return argument.empty() || argument.starts_with('[') ? "" : " -r";
}

void writeFish(std::ostream& out, const CLI::App& app) {
    const auto quoted = [](const std::string& text) {
        return std::string("'").append(replaced(replaced(oneLine(text), '\\', "\\\\"), '\'', "\\'")).append("'");
    };
    out << "function __pixkit_colours\n    string split ' ' '" << colours() << "'\nend\n";
    for (const CLI::App* command : commandsOf(app)) {
        const std::string condition =
            std::string(" -n '__fish_seen_subcommand_from ").append(command->get_name()).append("'");
        out << "complete -c pixkit -n __fish_use_subcommand -f -a " << command->get_name() << " -d "
            << quoted(command->get_description()) << '\n';
        if (isHelp(*command))
            out << "complete -c pixkit" << condition << " -f -a " << quoted(joined(helpTopics(app))) << '\n';
        for (const CLI::Option* option : optionsOf(*command)) {
            out << "complete -c pixkit" << condition;
            for (const std::string& name : option->get_snames())
                out << " -s " << name;
            for (const std::string& name : option->get_lnames())
                out << " -l " << name;
            out << fishValues(*option) << " -d " << quoted(option->get_description()) << '\n';
        }
    }
}

} // namespace

void writeManual(std::ostream& out, const CLI::App& app, std::string_view version) {
    out << ".TH PIXKIT 1 \"\" \"pixkit " << version << "\"\n.SH NAME\npixkit \\- "
        << "load pictures, change them, save them\n.SH SYNOPSIS\n\\fBpixkit\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]... "
           "[\\fIFILE\\fR]...\n.SH COMMANDS\n";
    for (const CLI::App* command : commandsOf(app)) {
        out << ".TP\n\\fB" << command->get_name() << "\\fR\n" << roff(oneLine(command->get_description())) << '\n';
    }
    for (const CLI::App* command : commandsOf(app))
        writeCommand(out, *command);
    for (const Topic& topic : topics()) {
        out << ".SH " << roff(topic.title) << '\n';
        writeVerbatim(out, topic.text);
    }
}

std::vector<std::string> helpTopics(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : commandsOf(app))
        names.push_back(command->get_name());
    for (const Topic& topic : topics())
        names.emplace_back(topic.name);
    names.insert(names.end(), {"man", "bash", "zsh", "fish"});
    return names;
}

bool writeCompletions(std::ostream& out, const CLI::App& app, std::string_view shell) {
    if (shell == "bash") writeBash(out, app);
    if (shell == "zsh") writeZsh(out, app);
    if (shell == "fish") writeFish(out, app);
    return shell == "bash" || shell == "zsh" || shell == "fish";
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
