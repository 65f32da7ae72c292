#pragma once
// The command line of the program: the option table and its parser.
// Parsed by hand rather than by the GUI toolkit, so that a batch run never
// initialises the desktop libraries and needs no display.

#include <string>

// One row of the option table.
struct CmdLineEntry
{
    bool is_switch;         // a switch takes no value; an option takes a text
    const char* short_name; // one letter
    const char* long_name;
    const char* description;
};

extern const CmdLineEntry g_cmdLineDesc[];
extern const int g_cmdLineDescSize;

// What the command line asked for.
struct CommandLineOptions
{
    bool help = false;
    bool free = false;
    bool premium = false;
    bool verbose = false;
    bool no_splash = false;
    bool keywords = false;
    bool version = false;
    std::string batch_file; // empty unless -b was given with a value
};

class CommandLine
{
public:
    // Fills `options`; on a malformed command line returns false with `error` set.
    static bool parse(int argc, const char* const* argv, CommandLineOptions& options, std::string& error);
    // The help text: the option table and the exit statuses of batch mode.
    static std::string usage(const std::string& program);
};
