#include "CommandLine.h"

#include <algorithm>
#include <sstream>

const CmdLineEntry g_cmdLineDesc[] = {
    {true, "h", "help", "Displays Help on the command line parameters"},
    {true, "f", "free", "Launch Free version"},
    {true, "p", "premium", "Launch Premium version (if allowed)"},
    {true, "v", "verbose", "Launch in Verbose mode"},
    {true, "s", "nosplash", "No splash screen at startup"},
    {false, "b", "batch", "Launch in Batch mode"},
    {true, "k", "keywords", "Prints the reference of every batch keyword and exits"},
    {true, "V", "version", "Prints the version and exits"},
};
const int g_cmdLineDescSize = sizeof(g_cmdLineDesc) / sizeof(g_cmdLineDesc[0]);

namespace
{

const CmdLineEntry* find_entry(const std::string& name)
{
    for (const CmdLineEntry& e : g_cmdLineDesc)
        if (name == e.short_name || name == e.long_name)
            return &e;
    return nullptr;
}

void apply_switch(const CmdLineEntry& e, CommandLineOptions& options)
{
    switch (e.short_name[0])
    {
    case 'h':
        options.help = true;
        break;
    case 'f':
        options.free = true;
        break;
    case 'p':
        options.premium = true;
        break;
    case 'v':
        options.verbose = true;
        break;
    case 's':
        options.no_splash = true;
        break;
    case 'k':
        options.keywords = true;
        break;
    case 'V':
        options.version = true;
        break;
    default:
        break;
    }
}

// Short switches may be grouped ("-vs"), and the batch option may be glued
// to its value ("-bfile"): both forms users know from other tools.
bool parse_grouped(const std::string& body, int& k, int argc, const char* const* argv,
                   CommandLineOptions& options, std::string& error)
{
    for (size_t c = 0; c < body.size(); ++c)
    {
        const CmdLineEntry* e = find_entry(body.substr(c, 1));
        if (!e)
        {
            error = "Unknown option '" + body + "'";
            return false;
        }
        if (e->is_switch)
        {
            apply_switch(*e, options);
            continue;
        }
        if (c + 1 < body.size())
            options.batch_file = body.substr(c + 1);
        else if (k + 1 < argc)
            options.batch_file = argv[++k];
        else
        {
            error = std::string("Option '") + e->short_name + "' requires a value.";
            return false;
        }
        return true;
    }
    return true;
}

} // namespace

bool CommandLine::parse(int argc, const char* const* argv, CommandLineOptions& options, std::string& error)
{
    options = CommandLineOptions();
    error.clear();
    for (int k = 1; k < argc; ++k)
    {
        std::string arg = argv[k];
        if (arg.size() < 2 || arg[0] != '-')
        {
            error = "Unexpected parameter '" + arg + "'";
            return false;
        }
        std::string body = arg.substr(arg[1] == '-' ? 2 : 1);
        std::string value;
        bool has_value = false;
        const size_t eq = body.find('=');
        if (eq != std::string::npos)
        {
            value = body.substr(eq + 1);
            body = body.substr(0, eq);
            has_value = true;
        }
        const CmdLineEntry* e = find_entry(body);
        if (!e)
        {
            if (has_value || !parse_grouped(body, k, argc, argv, options, error))
            {
                if (error.empty())
                    error = "Unknown option '" + body + "'";
                return false;
            }
            continue;
        }
        if (e->is_switch)
        {
            if (has_value)
            {
                error = "Unexpected value for switch '" + body + "'";
                return false;
            }
            apply_switch(*e, options);
            continue;
        }
        if (!has_value)
        {
            if (k + 1 >= argc)
            {
                error = std::string("Option '") + e->short_name + "' requires a value.";
                return false;
            }
            value = argv[++k];
        }
        options.batch_file = value;
    }
    return true;
}

std::string CommandLine::usage(const std::string& program)
{
    std::ostringstream s;
    s << "Usage: " << program << " [-h] [-f] [-p] [-v] [-s] [-k] [-V] [-b <file>]\n";
    for (const CmdLineEntry& e : g_cmdLineDesc)
    {
        std::string names =
            std::string("  -") + e.short_name + ", --" + e.long_name + (e.is_switch ? "" : " <file>");
        names.resize(std::max<size_t>(names.size() + 2, 26), ' ');
        s << names << e.description << "\n";
    }
    s << "\nWithout -b the desktop application opens. With -b the batch file is run\n"
         "to its end without a window, and the exit status tells how it went:\n"
         "  0  the batch ran to its end\n"
         "  1  the batch file failed to load\n"
         "  2  the batch was loaded but its launch failed\n"
         "  3  nothing was run: bad command line, or a mode this version does not allow\n"
         "  4  the batch ran to its end, but with errors: they are listed once each at the end\n";
    s << "\nThe batch file is told in doc/USERS_GUIDE.md; every keyword, with its default,\n"
         "range and unit, is listed by --keywords (also in doc/KEYWORDS.md).\n";
    return s.str();
}
