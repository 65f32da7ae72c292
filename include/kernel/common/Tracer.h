#pragma once
// The kernel's tracer: message levels and switches, the caller's trace and
// progress functions, and the three semicolon-separated statistics files
// (by iteration, along the centerline, by grain size).
//
// A statistics file is staged for a run: its header and lines go to a
// temporary beside it, renamed into place when the first sequence ends
// (closeXxxFile); later sequences append to the run's own file. A run that
// never ends a sequence leaves the previous file of that name as it was.

#include "interface/iTracer.h"
#include "kernel/common/StagedFile.h"

#include <fstream>
#include <ios>
#include <memory>
#include <string>
#include <vector>

class Tracer : public iTracer
{
public:
    Tracer();
    ~Tracer() override;
    Tracer(const Tracer&) = delete;
    Tracer& operator=(const Tracer&) = delete;

    void setTracerId(int id) override;
    void setVerbose(bool verbose) override;
    void setTraceAvuls(bool on) override;
    void setTraceConstruct(bool on) override;
    void setTraceAggrad(bool on) override;
    void setTraceMigrat(bool on) override;
    void setTraceCond(bool on) override;
    void setTraceMgmt(bool on) override;
    void setGenerateStatsIteration(bool on) override;
    void setGenerateStatsAvulsion(bool on) override;
    void setGenerateStatsProps(bool on) override;
    void setGenerateCenterlineStats(bool on) override;
    void setGenerateGrainsizeStats(bool on) override;
    bool setStatsInterval(unsigned int n) override;
    TraceLevel getTraceLevel() const override;
    int getTracerId() const override;
    void setTraceLevel(int level) override;
    void setTraceFunction(TraceFunction function) override;
    void setProgressFunction(ProgressFunction function) override;
    void setStatsFile(const std::string& name) override;
    void setCenterlineStatsFile(const std::string& name) override;
    void setGrainsizeStatsFile(const std::string& name) override;
    bool resetStatsFiles() override;
    bool dumpStats(const std::string& line) override;
    bool dumpCenterlineStats(const std::string& line) override;
    bool dumpGrainsizeStats(const std::string& line) override;
    void closeStatsFile() override;
    void closeCenterlineStatsFile() override;
    void closeGrainsizeStatsFile() override;
    void discardStatsFiles() override;
    ProgressFunction getProgressFunction() const override;
    void traceCallIn(const std::string& name) override;
    void traceCallOut(const std::string& name) override;
    void trace(const std::string& text, TraceLevel level) override;
    bool progress(int n) override;
    bool traceLevel(TraceLevel level) const override;
    bool traceAvuls() const override;
    bool traceConstruct() const override;
    bool traceAggrad() const override;
    bool traceMigrat() const override;
    bool traceCond() const override;
    bool traceMgmt() const override;
    bool traceSteepest() const override;
    bool generateStatsIt() const override;
    bool generateStatsAv() const override;
    bool generateStatsProps() const override;
    bool generateStats() const override;
    bool generateCenterlineStats() const override;
    bool generateGrainsizeStats() const override;
    unsigned int statsInterval() const override;
    unsigned int getErrorCount() const override;
    const std::vector<std::string>& getDistinctErrors() const override;
    void resetErrors() override;
    void noteHiddenError(const std::string& text) override;

    // Open for writing lines, with std::ios::app or std::ios::trunc: the
    // run's temporary until a sequence has ended, the file itself after.
    bool openStatsFile(std::ios::openmode mode);
    bool openCenterlineStatsFile(std::ios::openmode mode);
    bool openGrainsizeStatsFile(std::ios::openmode mode);

    // Copies the settings of `other`; open streams are neither shared nor copied.
    void resetFrom(const Tracer& other);

    const std::string& getStatsFile() const { return _stats_file; }
    const std::string& getCenterlineStatsFile() const { return _cl_stats_file; }
    const std::string& getGrainsizeStatsFile() const { return _gr_stats_file; }
    int getCallDepth() const { return _call_depth; }

    // Header lines of the statistics files, without the end of line.
    static std::string statsHeader(bool with_proportions);
    static std::string centerlineStatsHeader();
    static std::string grainsizeStatsHeader();

    static constexpr unsigned int MP_DEFAULT_STATS_INTERVAL = 1;
    static constexpr unsigned int MP_MAX_STATS_INTERVAL = 1000;
    static constexpr size_t MP_MAX_DISTINCT_ERRORS = 100;

private:
    enum Switch : unsigned int
    {
        SW_TRACE_AVULS = 1u << 0,
        SW_TRACE_CONSTRUCT = 1u << 1,
        SW_TRACE_AGGRAD = 1u << 2,
        SW_TRACE_MIGRAT = 1u << 3,
        SW_TRACE_COND = 1u << 4,
        SW_TRACE_MGMT = 1u << 5,
        SW_STATS_IT = 1u << 6,
        SW_STATS_AV = 1u << 7,
        SW_STATS_PROPS = 1u << 8,
        SW_STATS_CL = 1u << 9,
        SW_STATS_GR = 1u << 10
    };

    // Keeps the text of an error line, without its prefixes, once.
    void recordError(const std::string& text);
    void setSwitch(Switch bit, bool on);
    bool hasSwitch(Switch bit) const { return (_switches & bit) != 0; }

    using Staged = std::unique_ptr<StagedFile>;
    bool openCsv(std::ofstream& stream, const Staged& staged, const std::string& name, const char* kind,
                 std::ios::openmode mode);
    bool writeHeader(std::ofstream& stream, Staged& staged, const std::string& name, const char* kind,
                     const std::string& header);
    bool dumpLine(std::ofstream& stream, const Staged& staged, const std::string& name, const char* kind,
                  const std::string& line);
    // Closes the stream and puts a staged file in place.
    void closeCsv(std::ofstream& stream, Staged& staged, const std::string& name);

    int _call_depth;
    int _tracer_id;
    TraceLevel _level;
    std::string _stats_file;
    std::string _cl_stats_file;
    std::string _gr_stats_file;
    std::ofstream _stats_stream;
    std::ofstream _cl_stats_stream;
    std::ofstream _gr_stats_stream;
    // The run's temporaries, until a sequence ends.
    Staged _stats_staged;
    Staged _cl_stats_staged;
    Staged _gr_stats_staged;
    TraceFunction _trace_function;
    ProgressFunction _progress_function;
    unsigned int _switches;
    unsigned int _stats_interval;
    unsigned int _error_count = 0;
    std::vector<std::string> _distinct_errors;
};
