#include "kernel/files/GridReal.h"

#include "TestSupport.h"

#include <cstdint>
#include <string>
#include <vector>

using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

// Small deterministic generator, so that every run feeds the same variants.
class Xorshift
{
public:
    explicit Xorshift(uint64_t seed) : _state(seed) {}
    uint64_t next()
    {
        _state ^= _state << 13;
        _state ^= _state >> 7;
        _state ^= _state << 17;
        return _state;
    }
    size_t below(size_t n) { return n == 0 ? 0 : static_cast<size_t>(next() % n); }

private:
    uint64_t _state;
};

// Bytes that make the readers take their less travelled roads.
const char INTERESTING[] = {'0', '1', '9', '-', '+', '.', 'e', 'E',  ' ',    '\n',   '\r', '\t',
                            '#', 'N', 'A', 'X', 'Y', 'Z', '_', '\0', '\x7f', '\xff', '5',  '3'};

std::string corrupt(const std::string& text, Xorshift& random)
{
    std::string out = text;
    const size_t edits = 1 + random.below(4);
    for (size_t e = 0; e < edits && !out.empty(); ++e)
    {
        const size_t at = random.below(out.size());
        switch (random.below(4))
        {
        case 0:
            out[at] = INTERESTING[random.below(sizeof(INTERESTING))];
            break;
        case 1:
            out[at] = static_cast<char>(random.below(256));
            break;
        case 2:
            out.erase(at, 1 + random.below(8));
            break;
        default:
            out.insert(at, 1, INTERESTING[random.below(sizeof(INTERESTING))]);
            break;
        }
    }
    return out;
}

// A grid read without failure must hold its geometry and bounded values;
// a failed read must say why, except where the reader is silent on purpose.
void check_outcome(const GridReal& grid, bool ok, int format, const std::string& variant)
{
    if (ok)
    {
        const size_t nodes = static_cast<size_t>(grid.getNx()) * grid.getNy() * grid.getNz();
        ASSERT_EQ(grid.getValues().size(), nodes) << variant;
        for (double v : grid.getValues())
        {
            ASSERT_TRUE(v >= -1e30 && v <= 1e30) << variant;
        }
        if (grid.has_values())
        {
            int i = 0, j = 0;
            EXPECT_LE(grid.get_min(i, j), grid.get_max(i, j)) << variant;
            EXPECT_TRUE(grid.is_on_grid(i, j)) << variant;
        }
        return;
    }
    if (format == GRID_FORMAT_F2G || format == GRID_FORMAT_GSLIB)
    {
        EXPECT_FALSE(grid.getError().empty()) << variant;
    }
}

struct Sample
{
    std::string name;
    std::string text;
};

std::vector<Sample> valid_samples(const TempDir& dir)
{
    std::vector<Sample> samples;
    GridReal flat(10., 20., 5, 4, 1., 2.);
    flat.setLocation(Point3D(100., 200., 3.));
    flat.setRotation(12.5);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 4; ++j)
            flat.set_at(i, j, (i == 2 && j == 1) ? 1e30 : i * 1.25 - j * 3.5);
    EXPECT_TRUE(flat.write(dir.file("flat.f2g"), nullptr, GRID_FORMAT_F2G, "-Y +X +Z"));
    samples.push_back({"f2g 2D", read_file(dir.file("flat.f2g"))});

    GridReal block(10., 20., 2., 3, 2, 3, 0., 0., 5.);
    for (int k = 0; k < 3; ++k)
        for (int j = 0; j < 2; ++j)
            for (int i = 0; i < 3; ++i)
                block.set_at(i, j, k, 100. * k + 10. * j + i);
    GridReal second(block);
    EXPECT_TRUE(block.add_variable(&second));
    EXPECT_TRUE(block.write(dir.file("block.f2g"), nullptr, GRID_FORMAT_F2G, "+Z -X +Y"));
    samples.push_back({"f2g 3D", read_file(dir.file("block.f2g"))});

    // GSLIB keeps no geometry: the reader is given a 3 x 2 x 3 grid.
    EXPECT_TRUE(block.write(dir.file("block.gslib"), nullptr, GRID_FORMAT_GSLIB, "+X +Y +Z"));
    samples.push_back({"gslib", read_file(dir.file("block.gslib"))});

    samples.push_back({"cps3", "FSASCI 0 1 COMPUTED 0 1e30\n"
                               "FSATTR 0 0\n"
                               "FSLIMI 1000 1040 2000 2030 -5 12\n"
                               "FSNROW 4 5\n"
                               "FSXINC 10 10\n"
                               "->MSMODL: Surface\n"
                               "1 2 3 4 5\n6 7 8 9 10\n-5 1e30 12 0 3\n4 5 6 7 8\n"});
    samples.push_back({"cps3 3D", "FSASCI 0 1 COMPUTED 1 -1\n"
                                  "FSATTR 0 0\n"
                                  "FSLIMI 0 10 0 10 100 110 0 9\n"
                                  "FSNROW 2 2 2\n"
                                  "FSXINC 10 10 10\n"
                                  "->MSMODL\n"
                                  "1 2 3 4 5 6 7 8\n"});
    return samples;
}

} // namespace

TEST(GridFormatsFuzz, DamagedFilesNeverCrashTheReaders)
{
    TempDir dir;
    const std::vector<Sample> samples = valid_samples(dir);
    ASSERT_EQ(samples.size(), 5u);
    const std::string path = dir.file("variant.txt");
    Xorshift random(0x5eed1234abcdULL);
    int variants = 0, accepted = 0;
    for (const Sample& sample : samples)
    {
        std::vector<std::string> texts;
        // About forty truncations, then byte damage.
        for (size_t cut = 0; cut < sample.text.size(); cut += 1 + sample.text.size() / 40)
            texts.push_back(sample.text.substr(0, cut));
        for (int n = 0; n < 80; ++n)
            texts.push_back(corrupt(sample.text, random));
        for (const std::string& text : texts)
        {
            write_file(path, text);
            const int format = GridReal::get_format(path);
            // The geometry GSLIB and ascii reads rely on.
            GridReal grid(10., 20., 2., 3, 2, 3, 0., 0., 5.);
            const bool ok = grid.read(path);
            check_outcome(grid, ok, format, sample.name + ": " + text);
            // The format readers straight away, whatever the detection said.
            GridReal direct(10., 20., 2., 3, 2, 3, 0., 0., 5.);
            check_outcome(direct, direct.read_f2g(path), GRID_FORMAT_F2G, sample.name + " as f2g");
            check_outcome(direct, direct.read_cps3(path), GRID_FORMAT_CPS3, sample.name + " as cps3");
            GridReal given(10., 20., 2., 3, 2, 3, 0., 0., 5.);
            check_outcome(given, given.read_gslib(path), GRID_FORMAT_GSLIB, sample.name + " as gslib");
            GridReal plain(10., 20., 2., 3, 2, 3, 0., 0., 5.);
            plain.read_ascii(path);
            ++variants;
            accepted += ok ? 1 : 0;
        }
    }
    // The damage must leave both outcomes represented, or the test proves nothing.
    EXPECT_GT(variants, 500);
    EXPECT_GT(accepted, 0);
    EXPECT_LT(accepted, variants);
}

TEST(GridFormatsFuzz, UntouchedSamplesReadBack)
{
    TempDir dir;
    const std::string path = dir.file("sample.txt");
    const int expected_format[] = {GRID_FORMAT_F2G, GRID_FORMAT_F2G, GRID_FORMAT_GSLIB, GRID_FORMAT_CPS3,
                                   GRID_FORMAT_CPS3};
    const std::vector<Sample> samples = valid_samples(dir);
    for (size_t s = 0; s < samples.size(); ++s)
    {
        write_file(path, samples[s].text);
        EXPECT_EQ(GridReal::get_format(path), expected_format[s]) << samples[s].name;
        GridReal grid(10., 20., 2., 3, 2, 3, 0., 0., 5.);
        EXPECT_TRUE(grid.read(path)) << samples[s].name << ": " << grid.getError();
        EXPECT_TRUE(grid.has_values()) << samples[s].name;
    }
}
