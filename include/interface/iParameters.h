#pragma once
// The parameter registry as the interface sees it: every named setting of a
// simulation (value, default, range), the expert settings that have no name,
// and the version and distribution tier of the program.

#include <string>
#include <vector>

class iParameters
{
public:
    virtual ~iParameters() = default;

    // Set by name. False when the name is not in the map of that type; the
    // value is stored even when it lies outside its range.
    virtual bool setParamString(const std::string& name, const std::string& value) = 0;
    // Tries the real map, then the integer map (truncated), then the booleans (not 0).
    virtual bool setParam(const std::string& name, double value) = 0;
    virtual bool setParamBool(const std::string& name, bool value) = 0;
    virtual bool setParamInt(const std::string& name, int value) = 0;
    virtual bool setParamIntIdx(const std::string& name, int index, int value) = 0;
    virtual bool setParamDouble(const std::string& name, double value) = 0;
    virtual bool setParamDoubleIdx(const std::string& name, int index, double value) = 0;

    // Get by name. A missing name answers "??", false, 2147483647 or 1e30.
    virtual std::string getParamString(const std::string& name) const = 0;
    // Reads the real map, then the integer map, then the booleans.
    virtual double getParam(const std::string& name) const = 0;
    virtual bool getParamBool(const std::string& name) const = 0;
    virtual int getParamInt(const std::string& name) const = 0;
    virtual int getParamIntIdx(const std::string& name, int index) const = 0;
    virtual double getParamDouble(const std::string& name) const = 0;
    virtual double getParamDoubleIdx(const std::string& name, int index) const = 0;

    // Defaults.
    virtual std::string getParamDefString(const std::string& name) const = 0;
    virtual bool getParamDefBool(const std::string& name) const = 0;
    virtual int getParamDefInt(const std::string& name) const = 0;
    virtual int getParamDefIntIdx(const std::string& name, int index) const = 0;
    virtual double getParamDefDouble(const std::string& name) const = 0;
    virtual double getParamDefDoubleIdx(const std::string& name, int index) const = 0;

    // Ranges.
    virtual int getParamMinInt(const std::string& name) const = 0;
    virtual int getParamMinIntIdx(const std::string& name, int index) const = 0;
    virtual double getParamMinDouble(const std::string& name) const = 0;
    virtual double getParamMinDoubleIdx(const std::string& name, int index) const = 0;
    virtual int getParamMaxInt(const std::string& name) const = 0;
    virtual int getParamMaxIntIdx(const std::string& name, int index) const = 0;
    virtual double getParamMaxDouble(const std::string& name) const = 0;
    virtual double getParamMaxDoubleIdx(const std::string& name, int index) const = 0;

    // Readable report of the settings, one per line behind `prefix`; with `all`
    // the registry values come before the expert settings.
    virtual std::string getParamsDesc(const std::string& prefix, bool all) const = 0;
    // Writes every value, default and range; `full` also resets the domain geometry.
    virtual void reset(bool full) = 0;
    // True when a counting parameter is out of its range; `message` lists them.
    virtual bool check(std::string& message) const = 0;
    virtual bool write(const std::string& name) const = 0;
    virtual bool read(const std::string& name) = 0;

    // Expert settings.
    virtual void setSinuoInterval(unsigned int interval) = 0;
    virtual unsigned int sinuoInterval() const = 0;
    virtual void setCurvaturePointsNumber(int number) = 0;
    virtual int curvaturePointsNumber() const = 0;
    virtual void setCondMigWells(int factor) = 0;
    virtual int getCondMigWellsFactor() const = 0;
    virtual bool usingCondMigWells() const = 0;
    virtual void setCondAvWells(bool on) = 0;
    virtual bool usingCondAvWells() const = 0;
    virtual void setCondNewAlgo(bool on) = 0;
    virtual bool usingCondNewAlgo() const = 0;
    virtual void setCondAvMP(bool on) = 0;
    virtual bool usingCondAvMP() const = 0;
    virtual void setCondBlockAv(bool on) = 0;
    virtual bool usingCondBlockAv() const = 0;
    virtual void setDryChannel(bool on) = 0;
    virtual bool usingDryChannel() const = 0;
    virtual void setOldFilling(bool on) = 0;
    virtual bool usingOldFilling() const = 0;
    virtual void setBankErodCoeff(double coeff) = 0;
    virtual double getBankErodCoeff() const = 0;
    virtual bool usingBankErodCoeff() const = 0;
    virtual void setTurbAggHeightCoeff(double coeff) = 0;
    virtual double getTurbAggHeightCoeff() const = 0;
    virtual void setScourFactor(double factor) = 0;
    virtual double getScourFactor() const = 0;
    virtual void setFrictionCoeff(double coeff) = 0;
    virtual double getFrictionCoeff() const = 0;
    virtual void setMinGrainsize(int index) = 0;
    virtual int getMinGrainsize() const = 0;
    virtual void setMaxGrainsize(int index) = 0;
    virtual int getMaxGrainsize() const = 0;

    // Simulation type (each setter resets the registry), tier and version.
    virtual void setUsingFluvi() = 0;
    virtual void setUsingTurbi() = 0;
    // 0 Free, 1 Premium, 2 Research.
    virtual void setUsingDistrib(int tier) = 0;
    virtual void setExpirationDate(const std::string& date) = 0;
    // Fifteen percentages, one per grain size class; false (and an error) otherwise.
    virtual bool setSedVolumes(const std::vector<int>& volumes) = 0;
    virtual bool usingVariablePBGrainsize() const = 0;
    virtual bool usingVarPBGrainOptim() const = 0;
    virtual bool usingVarPBGrainProxy() const = 0;
    virtual bool usingFree() const = 0;
    virtual bool usingPremium() const = 0;
    virtual bool usingResearch() const = 0;
    virtual bool usingFluvi() const = 0;
    virtual bool usingTurbi() const = 0;
    virtual bool usingLobes() const = 0;
    virtual double getVersion() const = 0;
    virtual std::string getVersionStr() const = 0;
    virtual std::string getVersionDate() const = 0;
    virtual int getDistrib() const = 0;
    virtual std::string getDistribStr() const = 0;
    virtual std::string getExpirationDate() const = 0;
    virtual std::string getFullVersion() const = 0;
    virtual std::vector<int> getSedVolumes() const = 0;
    virtual std::vector<double> getSedProportions() const = 0;
    virtual int getSedMedianClass() const = 0;

    // Turbidite and lobes share every turbiditic rule.
    virtual bool usingTurbiOrLobes() const = 0;

    // The value of `name` as a user reads it in a log: integers as integers,
    // reals with six significant digits, booleans as 0 or 1, "??" when unknown.
    virtual std::string getParamText(const std::string& name) const = 0;
};
