#pragma once
// The kernel's only voice: leveled messages, the progress call through which a
// caller may stop a run, and the statistics files. The kernel never prints by
// itself; the application installs the functions that receive the text.

#include <string>
#include <vector>

enum TraceLevel
{
    TRACE_FATAL = 1,
    TRACE_ERROR = 2,
    TRACE_WARNING = 3,
    TRACE_INFO = 4,
    TRACE_DEBUG = 5,
    TRACE_ALL = 6
};

typedef void (*TraceFunction)(const char*, TraceLevel);
typedef bool (*ProgressFunction)(int);

// Every message line starts with one of these 16-character prefixes.
constexpr const char* MP_TRACE_PREFIX_ERROR = "##  ERROR  ## : ";
constexpr const char* MP_TRACE_PREFIX_WARNING = "#  WARNING  # : ";
constexpr const char* MP_TRACE_PREFIX_INFO = "    Info      : ";
constexpr const char* MP_TRACE_PREFIX_DEBUG = "    Debug     : ";
constexpr const char* MP_TRACE_PREFIX_CONT = "              : ";

class iTracer
{
public:
    virtual ~iTracer() {}

    virtual void setTracerId(int id) = 0;
    virtual void setVerbose(bool verbose) = 0;
    virtual void setTraceAvuls(bool on) = 0;
    virtual void setTraceConstruct(bool on) = 0;
    virtual void setTraceAggrad(bool on) = 0;
    virtual void setTraceMigrat(bool on) = 0;
    virtual void setTraceCond(bool on) = 0;
    virtual void setTraceMgmt(bool on) = 0;
    virtual void setGenerateStatsIteration(bool on) = 0;
    virtual void setGenerateStatsAvulsion(bool on) = 0;
    virtual void setGenerateStatsProps(bool on) = 0;
    virtual void setGenerateCenterlineStats(bool on) = 0;
    virtual void setGenerateGrainsizeStats(bool on) = 0;
    // False (and the default interval kept) when n is refused.
    virtual bool setStatsInterval(unsigned int n) = 0;
    virtual TraceLevel getTraceLevel() const = 0;
    virtual int getTracerId() const = 0;
    // Levels outside 1..6 are brought back to the nearest one.
    virtual void setTraceLevel(int level) = 0;
    virtual void setTraceFunction(TraceFunction function) = 0;
    virtual void setProgressFunction(ProgressFunction function) = 0;
    virtual void setStatsFile(const std::string& name) = 0;
    virtual void setCenterlineStatsFile(const std::string& name) = 0;
    virtual void setGrainsizeStatsFile(const std::string& name) = 0;
    virtual bool resetStatsFiles() = 0;
    virtual bool dumpStats(const std::string& line) = 0;
    virtual bool dumpCenterlineStats(const std::string& line) = 0;
    virtual bool dumpGrainsizeStats(const std::string& line) = 0;
    virtual void closeStatsFile() = 0;
    virtual void closeCenterlineStatsFile() = 0;
    virtual void closeGrainsizeStatsFile() = 0;
    // Closes the statistics files, dropping those no sequence has completed.
    virtual void discardStatsFiles() = 0;
    virtual ProgressFunction getProgressFunction() const = 0;
    virtual void traceCallIn(const std::string& name) = 0;
    virtual void traceCallOut(const std::string& name) = 0;
    // Hands already formed line(s) to the trace function.
    virtual void trace(const std::string& text, TraceLevel level) = 0;
    virtual bool progress(int n) = 0;
    virtual bool traceLevel(TraceLevel level) const = 0;
    virtual bool traceAvuls() const = 0;
    virtual bool traceConstruct() const = 0;
    virtual bool traceAggrad() const = 0;
    virtual bool traceMigrat() const = 0;
    virtual bool traceCond() const = 0;
    virtual bool traceMgmt() const = 0;
    virtual bool traceSteepest() const = 0;
    virtual bool generateStatsIt() const = 0;
    virtual bool generateStatsAv() const = 0;
    virtual bool generateStatsProps() const = 0;
    virtual bool generateStats() const = 0;
    virtual bool generateCenterlineStats() const = 0;
    virtual bool generateGrainsizeStats() const = 0;
    virtual unsigned int statsInterval() const = 0;
    // The error lines of the run so far, counted even when the level hides
    // them: how many, and each distinct text once in the order first seen.
    virtual unsigned int getErrorCount() const = 0;
    virtual const std::vector<std::string>& getDistinctErrors() const = 0;
    virtual void resetErrors() = 0;
    // Counts an error line that the level keeps from being traced.
    virtual void noteHiddenError(const std::string& text) = 0;

    // Conveniences: nothing is built unless the level is admitted.
    void error(const std::string& text) { emit(TRACE_ERROR, MP_TRACE_PREFIX_ERROR, text); }
    void warning(const std::string& text) { emit(TRACE_WARNING, MP_TRACE_PREFIX_WARNING, text); }
    void info(const std::string& text) { emit(TRACE_INFO, MP_TRACE_PREFIX_INFO, text); }
    void debug(const std::string& text) { emit(TRACE_DEBUG, MP_TRACE_PREFIX_DEBUG, text); }

    // The prefix, then each line of the text ended by a new line; lines after
    // the first are set under the continuation prefix.
    static std::string formLines(const char* prefix, const std::string& text)
    {
        std::string out = prefix;
        std::string::size_type start = 0;
        for (;;)
        {
            const std::string::size_type end = text.find('\n', start);
            out.append(text, start, end == std::string::npos ? std::string::npos : end - start);
            out += '\n';
            if (end == std::string::npos || end + 1 == text.size())
                break;
            start = end + 1;
            out += MP_TRACE_PREFIX_CONT;
        }
        return out;
    }

private:
    void emit(TraceLevel level, const char* prefix, const std::string& text)
    {
        if (traceLevel(level))
            trace(formLines(prefix, text), level);
        else if (level <= TRACE_ERROR)
            noteHiddenError(formLines(prefix, text));
    }
};
