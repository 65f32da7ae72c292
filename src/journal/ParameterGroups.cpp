#include "gui/ParameterGroups.h"

#include "gui/DomainParameters.h"
#include "interface/iParameters.h"
#include "kernel/parameters/ParameterDeclarations.h"

namespace
{

typedef JournalEntry E;

E expert_int(const std::string& label, E::Getter getter, E::Setter setter)
{
    return E::expert(E::INTEGER, label, getter, setter);
}

E expert_real(const std::string& label, E::Getter getter, E::Setter setter)
{
    return E::expert(E::REAL, label, getter, setter);
}

E expert_bool(const std::string& label, E::Getter getter, E::Setter setter)
{
    return E::expert(E::BOOLEAN, label, getter, setter);
}

// The period and the Poisson mean of an event clock, under its frequency law.
void add_clock(std::vector<E>& entries, const std::string& prefix)
{
    entries.push_back(E::declared(prefix + "_FREQ"));
    entries.push_back(E::declared(prefix + "_PERIOD"));
    entries.push_back(E::declared(prefix + "_POISSON"));
}

// The law of a drawn quantity and the parameters of its four forms.
void add_distribution(std::vector<E>& entries, const std::string& prefix)
{
    entries.push_back(E::declared(prefix + "_DIST"));
    entries.push_back(E::declared(prefix + "_CONST"));
    entries.push_back(E::declared(prefix + "_MIN"));
    entries.push_back(E::declared(prefix + "_MAX"));
    entries.push_back(E::declared(prefix + "_NORM_MEAN"));
    entries.push_back(E::declared(prefix + "_NORM_STDEV"));
    entries.push_back(E::declared(prefix + "_LOGNORM_MEAN"));
    entries.push_back(E::declared(prefix + "_LOGNORM_STDEV"));
}

std::vector<E> simulation_entries()
{
    return {
        E::up("Simulation"),
        E::declared("SIM_SEED"),
        E::up("Expert"),
        expert_int(
            "Real Sinuosity Computation Interval",
            [](const iParameters& p) { return double(p.sinuoInterval()); },
            [](iParameters& p, double v) { p.setSinuoInterval(static_cast<unsigned int>(v)); }),
        expert_int(
            "Number of Points for Curvatures Calculation",
            [](const iParameters& p) { return double(p.curvaturePointsNumber()); },
            [](iParameters& p, double v) { p.setCurvaturePointsNumber(static_cast<int>(v)); }),
        expert_bool(
            "Dry Channel", [](const iParameters& p) { return p.usingDryChannel() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setDryChannel(v != 0.); }),
        expert_bool(
            "Using Old Filling Algorithm", [](const iParameters& p) { return p.usingOldFilling() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setOldFilling(v != 0.); }),
        expert_real(
            "Scour Factor", [](const iParameters& p) { return p.getScourFactor(); },
            [](iParameters& p, double v) { p.setScourFactor(v); }),
        expert_real(
            "Friction Coefficient", [](const iParameters& p) { return p.getFrictionCoeff(); },
            [](iParameters& p, double v) { p.setFrictionCoeff(v); }),
        expert_real(
            "Turbidites Aggradation Height Coefficient",
            [](const iParameters& p) { return p.getTurbAggHeightCoeff(); },
            [](iParameters& p, double v) { p.setTurbAggHeightCoeff(v); }),
        E::down(),
        E::down(),
    };
}

std::vector<E> surface_entries()
{
    return {
        E::up("Surfaces"), E::declared("DOMAIN_ZREF"), E::declared("DOMAIN_SLOPE"), E::declared("ZUL_TYPE"),
        E::down(),
    };
}

std::vector<E> wells_entries()
{
    return {
        E::up("Wells"),
        E::declared("COND_WELL_RELAX"),
        E::declared("COND_WELL_CLOSURE_ON"),
        E::declared("COND_WELL_CLOSURE"),
        E::declared("COND_WELL_STOP_HONORED"),
        E::up("Expert"),
        expert_int(
            "Maximum Well Influence Distance Factor",
            [](const iParameters& p) { return double(p.getCondMigWellsFactor()); },
            [](iParameters& p, double v) { p.setCondMigWells(static_cast<int>(v)); }),
        expert_bool(
            "Avulsions Conditioned by Wells",
            [](const iParameters& p) { return p.usingCondAvWells() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setCondAvWells(v != 0.); }),
        expert_bool(
            "Conditioning New Algorithm", [](const iParameters& p) { return p.usingCondNewAlgo() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setCondNewAlgo(v != 0.); }),
        expert_bool(
            "Conditioned Avulsion on Mean Position",
            [](const iParameters& p) { return p.usingCondAvMP() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setCondAvMP(v != 0.); }),
        expert_bool(
            "Block Avulsions by Conditioning",
            [](const iParameters& p) { return p.usingCondBlockAv() ? 1. : 0.; },
            [](iParameters& p, double v) { p.setCondBlockAv(v != 0.); }),
        E::down(),
        E::down(),
    };
}

std::vector<E> network_entries()
{
    return {
        E::up("Channel"),
        E::declared("CHNL_WIDTH"),
        E::declared("CHNL_MAX_DEPTH"),
        E::declared("CHNL_WAVELENGTH"),
        E::declared("CHNL_MARGIN"),
        E::declared("CHNL_FLW_DIR"),
        E::up("Scale"),
        E::declared("CHNL_SCALE_DIST"),
        E::declared("CHNL_SCALE_CONST"),
        E::declared("CHNL_SCALE_MIN"),
        E::declared("CHNL_SCALE_MAX"),
        E::declared("CHNL_SCALE_NORM_MEAN"),
        E::declared("CHNL_SCALE_NORM_STDEV"),
        E::declared("CHNL_SCALE_LOGNORM_MEAN"),
        E::declared("CHNL_SCALE_LOGNORM_STDEV"),
        E::down(),
        E::down(),
    };
}

std::vector<E> erodibility_entries()
{
    return {
        E::up("Erodibility"),
        E::declared("EROD_COEF"),
        E::declared("EROD_OFFSET"),
        expert_real(
            "Bank Erodibility Coefficient", [](const iParameters& p) { return p.getBankErodCoeff(); },
            [](iParameters& p, double v) { p.setBankErodCoeff(v); }),
        E::down(),
    };
}

std::vector<E> avulsion_entries()
{
    std::vector<E> entries = {E::up("Avulsions"), E::up("Local")};
    add_clock(entries, "AV_LOC");
    entries.push_back(E::declared("AV_LOC_PROB1"));
    entries.push_back(E::declared("AV_LOC_PROB2"));
    entries.push_back(E::down());
    entries.push_back(E::up("Regional"));
    add_clock(entries, "AV_REG");
    entries.push_back(E::down());
    entries.push_back(E::declared("AV_LV_OB"));
    entries.push_back(E::declared("AV_NO_SPLAY"));
    entries.push_back(E::down());
    return entries;
}

std::vector<E> equilibrium_entries()
{
    std::vector<E> entries = {E::up("Equilibrium Profile"), E::declared("AG_EP_INIT_ELEV")};
    add_clock(entries, "AG_EP");
    add_distribution(entries, "AG_EP");
    entries.push_back(E::down());
    return entries;
}

std::vector<E> grainsize_entries()
{
    return {
        E::up("Grain Size"),
        E::declared("GR_THRESHOLD"),
        E::declared("GR_PB"),
        E::declared("GR_QUICK_C0"),
        E::declared("GR_PB_PROXY"),
        E::declared("GR_PB_OPTIM"),
        E::declared("GR_PB_OPTIM_MIN"),
        E::declared("GR_PB_OPTIM_MAX"),
        E::declared("GR_PB_OPTIM_ALPHA"),
        E::up("Expert"),
        expert_int(
            "Minimum Grain Size Class", [](const iParameters& p) { return double(p.getMinGrainsize()); },
            [](iParameters& p, double v) { p.setMinGrainsize(static_cast<int>(v)); }),
        expert_int(
            "Maximum Grain Size Class", [](const iParameters& p) { return double(p.getMaxGrainsize()); },
            [](iParameters& p, double v) { p.setMaxGrainsize(static_cast<int>(v)); }),
        E::down(),
        E::down(),
    };
}

std::vector<E> sediment_entries()
{
    // One value per grain size class of the declared family.
    const ParameterDeclaration* volumes = ParameterDeclarations::find("SED_LOAD_VOL");
    std::vector<E> entries = {E::up("Sediment Load"), E::declared("SED_LOAD_MEAN"), E::up(volumes->label)};
    for (int index = 0; index < volumes->count; index++)
        entries.push_back(E::integer("Class " + std::to_string(index), volumes->name, index));
    entries.push_back(E::down());
    entries.push_back(E::down());
    return entries;
}

std::vector<E> mass_balance_entries()
{
    return {
        E::up("Mass Balance"),
        E::declared("MASS_BAL_ACTIVE"),
        E::declared("MASS_BAL_COEF"),
        E::down(),
    };
}

std::vector<E> aggradation_entries()
{
    std::vector<E> entries = {
        E::up("Aggradation"),       E::declared("AG_TYPE"),
        E::declared("AG_DRAP"),     E::declared("AG_EXP_DEC_THICK"),
        E::declared("AG_LV_WIDTH"), E::declared("AG_RAND_LAMBDA"),
        E::up("Overbank"),
    };
    add_clock(entries, "AG_OB");
    add_distribution(entries, "AG_OB");
    entries.push_back(E::declared("AG_OB_PEAT"));
    entries.push_back(E::declared("AG_OB_PEL_DRAP_INT"));
    entries.push_back(E::down());
    entries.push_back(E::down());
    return entries;
}

} // namespace

const std::vector<JournalEntry>& SimuParamParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = simulation_entries();
    return entries;
}

const std::vector<JournalEntry>& SurfaceParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = surface_entries();
    return entries;
}

const std::vector<JournalEntry>& WellsParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = wells_entries();
    return entries;
}

const std::vector<JournalEntry>& NetworkParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = network_entries();
    return entries;
}

const std::vector<JournalEntry>& ErodibilityParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = erodibility_entries();
    return entries;
}

const std::vector<JournalEntry>& AvulsionParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = avulsion_entries();
    return entries;
}

const std::vector<JournalEntry>& EquilibriumProfileParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = equilibrium_entries();
    return entries;
}

const std::vector<JournalEntry>& GrainsizeParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = grainsize_entries();
    return entries;
}

const std::vector<JournalEntry>& SedimentParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = sediment_entries();
    return entries;
}

const std::vector<JournalEntry>& MassBalanceParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = mass_balance_entries();
    return entries;
}

const std::vector<JournalEntry>& AggradationParameters::getEntries() const
{
    static const std::vector<JournalEntry> entries = aggradation_entries();
    return entries;
}

ParameterGroupList::ParameterGroupList(iParameters* params)
{
    _groups.push_back(std::make_unique<SimuParamParameters>(params));
    _groups.push_back(std::make_unique<DomainParameters>(params));
    _groups.push_back(std::make_unique<SurfaceParameters>(params));
    _groups.push_back(std::make_unique<WellsParameters>(params));
    _groups.push_back(std::make_unique<NetworkParameters>(params));
    _groups.push_back(std::make_unique<ErodibilityParameters>(params));
    _groups.push_back(std::make_unique<AvulsionParameters>(params));
    _groups.push_back(std::make_unique<EquilibriumProfileParameters>(params));
    _groups.push_back(std::make_unique<GrainsizeParameters>(params));
    _groups.push_back(std::make_unique<SedimentParameters>(params));
    _groups.push_back(std::make_unique<MassBalanceParameters>(params));
    _groups.push_back(std::make_unique<AggradationParameters>(params));
}

bool ParameterGroupList::saveInJnl(OutputJournalFile& journal, bool sequence) const
{
    bool good = true;
    for (const auto& group : _groups)
        good = group->saveInJnl(journal, sequence) && good;
    return good;
}

bool ParameterGroupList::readFromJnl(InputJournalFile& journal, bool sequence)
{
    for (const auto& group : _groups)
    {
        if (!group->readFromJnl(journal, sequence))
            return false;
    }
    return true;
}
