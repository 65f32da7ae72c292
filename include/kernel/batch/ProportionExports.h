#pragma once
// The proportion files a batch file asks for in its [GLOBAL] section:
// VPC_FILE and WELL_VPC_FILE (vertical proportion curves of the block and of
// the conditioning wells, by slices of VPC_DZ metres) and PM_FILE (the
// block's proportion matrix, node by node). Written after the last sequence.

#include "kernel/common/Constants.h"

#include <string>

class BatchPaths;
class iSimulator;

class ProportionExports
{
public:
    static bool is_keyword(const std::string& key);
    // `value` is a resolved file name for the file keywords. False with a
    // message for a bad value.
    bool read_keyword(const std::string& key, const std::string& value, std::string& error);
    // The step is given when a curve is asked for, and every file can be written.
    bool check(std::string& error) const;
    bool any() const { return !_vpcFile.empty() || !_pmFile.empty() || !_wellVpcFile.empty(); }
    // Names the files asked for to the batch's check of collisions.
    void listPaths(BatchPaths& paths) const;
    // Writes what was asked for, tracing each file; false at the first failure.
    bool save(iSimulator& simulator) const;

private:
    std::string _vpcFile;
    std::string _pmFile;
    std::string _wellVpcFile;
    double _dz = MP_UNDEF_REAL;
};
