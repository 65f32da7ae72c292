#pragma once
// The registry of every named setting of a simulation, with its default, its
// range and the parameter that decides whether it counts.

#include "interface/iParameters.h"

#include <map>
#include <string>
#include <vector>

class iTracer;
struct ParameterDeclaration;

struct tstring
{
    std::string value;
    std::string def;
};

struct tbool
{
    bool value = false;
    bool def = false;
};

// An entry whose control name is not empty counts only while the integer
// parameter of that name holds the control value.
struct tint
{
    int value = 0;
    int def = 0;
    int min = 0;
    int max = 0;
    std::string control;
    int control_value = 0;
};

struct tdouble
{
    double value = 0.;
    double def = 0.;
    double min = 0.;
    double max = 0.;
    std::string control;
    int control_value = 0;
};

class Parameters : public iParameters
{
public:
    explicit Parameters(iTracer* tracer);
    ~Parameters() override = default;

    // Copies the four maps and the expert settings; the tracer stays ours.
    void resetFrom(const Parameters& other);
    // Rebuilds the full version text from version, tier and expiration date.
    void updateFullVersion();

    bool setParamString(const std::string& name, const std::string& value) override;
    bool setParam(const std::string& name, double value) override;
    bool setParamBool(const std::string& name, bool value) override;
    bool setParamInt(const std::string& name, int value) override;
    bool setParamIntIdx(const std::string& name, int index, int value) override;
    bool setParamDouble(const std::string& name, double value) override;
    bool setParamDoubleIdx(const std::string& name, int index, double value) override;

    std::string getParamString(const std::string& name) const override;
    double getParam(const std::string& name) const override;
    bool getParamBool(const std::string& name) const override;
    int getParamInt(const std::string& name) const override;
    int getParamIntIdx(const std::string& name, int index) const override;
    double getParamDouble(const std::string& name) const override;
    double getParamDoubleIdx(const std::string& name, int index) const override;

    std::string getParamDefString(const std::string& name) const override;
    bool getParamDefBool(const std::string& name) const override;
    int getParamDefInt(const std::string& name) const override;
    int getParamDefIntIdx(const std::string& name, int index) const override;
    double getParamDefDouble(const std::string& name) const override;
    double getParamDefDoubleIdx(const std::string& name, int index) const override;

    int getParamMinInt(const std::string& name) const override;
    int getParamMinIntIdx(const std::string& name, int index) const override;
    double getParamMinDouble(const std::string& name) const override;
    double getParamMinDoubleIdx(const std::string& name, int index) const override;
    int getParamMaxInt(const std::string& name) const override;
    int getParamMaxIntIdx(const std::string& name, int index) const override;
    double getParamMaxDouble(const std::string& name) const override;
    double getParamMaxDoubleIdx(const std::string& name, int index) const override;

    std::string getParamsDesc(const std::string& prefix, bool all) const override;
    void reset(bool full) override;
    bool check(std::string& message) const override;
    bool write(const std::string& name) const override;
    bool read(const std::string& name) override;

    void setSinuoInterval(unsigned int interval) override;
    unsigned int sinuoInterval() const override { return _sinuo_interval; }
    void setCurvaturePointsNumber(int number) override;
    int curvaturePointsNumber() const override { return _curvature_points; }
    void setCondMigWells(int factor) override;
    int getCondMigWellsFactor() const override { return _cond_mig_wells; }
    bool usingCondMigWells() const override;
    void setCondAvWells(bool on) override { _cond_av_wells = on; }
    bool usingCondAvWells() const override { return _cond_av_wells; }
    void setCondNewAlgo(bool on) override { _cond_new_algo = on; }
    bool usingCondNewAlgo() const override { return _cond_new_algo; }
    void setCondAvMP(bool on) override { _cond_av_mp = on; }
    bool usingCondAvMP() const override { return _cond_av_mp; }
    void setCondBlockAv(bool on) override { _cond_block_av = on; }
    bool usingCondBlockAv() const override { return _cond_block_av; }
    void setDryChannel(bool on) override { _dry_channel = on; }
    bool usingDryChannel() const override { return _dry_channel; }
    void setOldFilling(bool on) override { _old_filling = on; }
    bool usingOldFilling() const override { return _old_filling; }
    void setBankErodCoeff(double coeff) override;
    double getBankErodCoeff() const override { return _bank_erod_coeff; }
    bool usingBankErodCoeff() const override;
    void setTurbAggHeightCoeff(double coeff) override;
    double getTurbAggHeightCoeff() const override { return _turb_agg_height_coeff; }
    void setScourFactor(double factor) override;
    double getScourFactor() const override { return _scour_factor; }
    void setFrictionCoeff(double coeff) override;
    double getFrictionCoeff() const override { return _friction_coeff; }
    void setMinGrainsize(int index) override;
    int getMinGrainsize() const override { return _min_grainsize; }
    void setMaxGrainsize(int index) override;
    int getMaxGrainsize() const override { return _max_grainsize; }

    void setUsingFluvi() override;
    void setUsingTurbi() override;
    void setUsingDistrib(int tier) override;
    void setExpirationDate(const std::string& date) override;
    bool setSedVolumes(const std::vector<int>& volumes) override;
    bool usingVariablePBGrainsize() const override;
    bool usingVarPBGrainOptim() const override;
    bool usingVarPBGrainProxy() const override;
    bool usingFree() const override { return _distrib == 0; }
    bool usingPremium() const override { return _distrib == 1; }
    bool usingResearch() const override { return _distrib == 2; }
    bool usingFluvi() const override;
    bool usingTurbi() const override;
    bool usingLobes() const override;
    double getVersion() const override { return _version; }
    std::string getVersionStr() const override { return _version_str; }
    std::string getVersionDate() const override { return _version_date; }
    int getDistrib() const override { return _distrib; }
    std::string getDistribStr() const override;
    std::string getExpirationDate() const override { return _expiration_date; }
    std::string getFullVersion() const override { return _full_version; }
    std::vector<int> getSedVolumes() const override;
    std::vector<double> getSedProportions() const override;
    int getSedMedianClass() const override;

    bool usingTurbiOrLobes() const override;

    std::string getParamText(const std::string& name) const override;

private:
    void resetDouble(const std::string& name, double def, double min, double max,
                     const std::string& control = std::string(), int value = 0);
    void resetInt(const std::string& name, int def, int min, int max,
                  const std::string& control = std::string(), int value = 0);
    void resetIntIdx(const std::string& name, int index, int def, int min, int max);
    void resetBool(const std::string& name, bool def);
    void resetString(const std::string& name, const std::string& def);
    void resetDeclared(const ParameterDeclaration& row, bool turbiditic);
    void traceError(const std::string& text) const;

    // Borrowed; receives the refusals of the expert setters.
    iTracer* _tracer;

    std::map<std::string, tstring> _strings;
    std::map<std::string, tbool> _bools;
    std::map<std::string, tint> _ints;
    std::map<std::string, tdouble> _doubles;

    // Expert settings: no name in the registry, set by the batch file or the panels.
    unsigned int _sinuo_interval;
    int _curvature_points;
    int _cond_mig_wells;
    bool _cond_av_wells;
    bool _cond_new_algo;
    bool _cond_av_mp;
    bool _cond_block_av;
    bool _dry_channel;
    bool _old_filling;
    double _bank_erod_coeff;
    double _turb_agg_height_coeff;
    double _scour_factor;
    double _friction_coeff;
    int _min_grainsize;
    int _max_grainsize;

    std::string _version_str;
    double _version;
    std::string _version_date;
    int _distrib;
    std::string _expiration_date;
    std::string _full_version;
};
