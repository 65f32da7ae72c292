#include "kernel/channel/Centerline.h"
#include "kernel/common/Constants.h"
#include "kernel/files/GridReal.h"
#include "kernel/files/PointsSet.h"

#include "TestSupport.h"

#include <cstdint>

using testing_support::assertion_text;
using testing_support::is_assertion_of;
using testing_support::read_file;
using testing_support::TempDir;
using testing_support::write_file;

namespace
{

// Header of a valid file, followed by `body`; the keywords are given by the caller.
std::string points_file(const std::string& keys, const std::string& body)
{
    return "# title\n" + keys + "~Ascii\n" + body;
}

// Exposes the storage so that a test can break the names/variables invariant.
class BrokenSet : public PointsSet
{
public:
    void add_orphan_name() { _names.push_back("orphan"); }
};

// Small deterministic generator for the corruption test (64-bit LCG).
class Lcg
{
public:
    explicit Lcg(uint64_t seed) : _state(seed) {}
    uint32_t next()
    {
        _state = _state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(_state >> 33);
    }

private:
    uint64_t _state;
};

PointsSet sample_3d()
{
    PointsSet set;
    set.add(100.5, 200.25, -3.5, {1.5, 7.});
    set.add(101., 202., -4., {2.5, 8.});
    set.add(103.75, 205., -4.5, {3.5, 9.});
    set.set_name(0, "Curvature");
    set.set_name(1, "Depth");
    return set;
}

} // namespace

TEST(PointsSet, ThreeDimensionalRoundTripAndLayout)
{
    TempDir dir;
    const std::string path = dir.file("set.txt");
    PointsSet set = sample_3d();
    ASSERT_TRUE(set.write(path, "Wells")) << set.get_message();

    const std::string expected = "# " + std::string(69, '=') +
                                 "\n"
                                 "# Wells saved by Sarvo\n"
                                 "# \n"
                                 "# \n"
                                 "# Dimension of points set (2D or 3D)\n"
                                 "N_DIMENSIONS=3\n"
                                 "# Number of points\n"
                                 "N_POINTS=3\n"
                                 "# Auxiliary variables\n"
                                 "N_VARIABLES=2\n"
                                 "VAR1_NAME=Curvature\n"
                                 "VAR2_NAME=Depth\n"
                                 "~Ascii\n"
                                 "100.5 200.25 -3.5 1.5 7 \n"
                                 "101 202 -4 2.5 8 \n"
                                 "103.75 205 -4.5 3.5 9 \n";
    EXPECT_EQ(read_file(path), expected);

    PointsSet back;
    ASSERT_TRUE(back.read(path)) << back.get_message();
    ASSERT_EQ(back.size(), 3);
    EXPECT_TRUE(back.is_3d());
    ASSERT_EQ(back.get_nb_variables(), 2);
    EXPECT_EQ(back.get_name(0), "Curvature");
    EXPECT_EQ(back.get_name(1), "Depth");
    for (int p = 0; p < 3; ++p)
    {
        double x0, y0, z0, x1, y1, z1;
        std::vector<double> v0, v1;
        ASSERT_TRUE(set.get_at(p, x0, y0, z0, v0));
        ASSERT_TRUE(back.get_at(p, x1, y1, z1, v1));
        EXPECT_EQ(x0, x1);
        EXPECT_EQ(y0, y1);
        EXPECT_EQ(z0, z1);
        EXPECT_EQ(v0, v1);
    }
    EXPECT_EQ(back.get_at(2), Point3D(103.75, 205., -4.5));

    // The copy is deep: changing the original leaves it as it was.
    PointsSet copy(back);
    back.set_name(0, "Other");
    back.add(1., 2., 3., {4., 5.});
    EXPECT_EQ(copy.get_name(0), "Curvature");
    EXPECT_EQ(copy.size(), 3);

    Centerline line;
    line.add(1., 2., 3.);
    ASSERT_TRUE(line.write(dir.file("cl.txt")));
    EXPECT_NE(read_file(dir.file("cl.txt")).find("\n# Centerline saved by Sarvo\n"), std::string::npos);
    Centerline line_back;
    ASSERT_TRUE(line_back.read(dir.file("cl.txt")));
    EXPECT_EQ(line_back.get_at(0), Point3D(1., 2., 3.));
}

TEST(PointsSet, TwoDimensionalSetsAndTheFourthColumn)
{
    TempDir dir;
    const std::string path = dir.file("plain.txt");
    PointsSet plain;
    plain.add(1., 2., MP_UNDEF_REAL);
    plain.add(3., 4., MP_UNDEF_REAL);
    EXPECT_FALSE(plain.is_3d());
    ASSERT_TRUE(plain.write(path, "Plain"));
    const std::string text = read_file(path);
    EXPECT_NE(text.find("N_DIMENSIONS=2\n"), std::string::npos);
    EXPECT_NE(text.find("~Ascii\n1 2 \n3 4 \n"), std::string::npos);
    PointsSet back;
    ASSERT_TRUE(back.read(path)) << back.get_message();
    EXPECT_FALSE(back.is_3d());
    double x, y, z;
    ASSERT_TRUE(back.get_at(1, x, y, z));
    EXPECT_EQ(x, 3.);
    EXPECT_EQ(y, 4.);
    EXPECT_EQ(z, MP_UNDEF_REAL);

    // Written with the variable in column 3, read from column 4: its own file is refused.
    PointsSet with_aux;
    with_aux.add(1., 2., MP_UNDEF_REAL, {10.});
    ASSERT_TRUE(with_aux.write(path, "Plain"));
    EXPECT_NE(read_file(path).find("~Ascii\n1 2 10 \n"), std::string::npos);
    EXPECT_FALSE(back.read(path));
    EXPECT_EQ(back.get_message(), "Wrong line format for point#0");
    EXPECT_EQ(back.size(), 2) << "a refused file leaves the set as it was";

    // With two variables the first one reads the second's column.
    PointsSet two_aux;
    two_aux.add(1., 2., MP_UNDEF_REAL, {10., 20.});
    ASSERT_TRUE(two_aux.write(path, "Plain"));
    EXPECT_FALSE(back.read(path));
    EXPECT_EQ(back.get_message(), "Wrong line format for point#0");

    // A two-dimensional file with a filler third column is read as intended.
    write_file(path, points_file("N_DIMENSIONS=2\nN_POINTS=2\nN_VARIABLES=1\nVAR1_NAME=K\n",
                                 "1 2 999 10\n3 4 999 30\n"));
    ASSERT_TRUE(back.read(path)) << back.get_message();
    std::vector<double> values;
    ASSERT_TRUE(back.get_at(1, x, y, z, values));
    EXPECT_EQ(values, std::vector<double>{30.});
    EXPECT_FALSE(back.is_3d());
}

TEST(PointsSet, AuxiliaryVariablesAndIndexes)
{
    PointsSet set;
    set.set_name(2, "C");
    ASSERT_EQ(set.get_nb_variables(), 3);
    EXPECT_EQ(set.get_name(0), "V1");
    EXPECT_EQ(set.get_name(1), "V2");
    EXPECT_EQ(set.get_name(2), "C");
    EXPECT_EQ(set.get_name(3), "??");
    EXPECT_FALSE(set.set_name(-1, "none"));
    EXPECT_EQ(set.get_nb_variables(), 3);

    // A variable first seen at the third point is undefined at the first two;
    // a point given fewer values leaves the others undefined.
    PointsSet grow;
    grow.add(0., 0., MP_UNDEF_REAL);
    grow.add(1., 0., MP_UNDEF_REAL, {5.});
    grow.add(2., 0., MP_UNDEF_REAL, {6., 7.});
    grow.add(3., 0., MP_UNDEF_REAL);
    ASSERT_EQ(grow.get_nb_variables(), 2);
    EXPECT_EQ(grow.get_name(1), "V2");
    const std::vector<std::vector<double>> expected = {
        {MP_UNDEF_REAL, MP_UNDEF_REAL}, {5., MP_UNDEF_REAL}, {6., 7.}, {MP_UNDEF_REAL, MP_UNDEF_REAL}};
    for (int p = 0; p < 4; ++p)
    {
        double x, y, z;
        std::vector<double> values;
        ASSERT_TRUE(grow.get_at(p, x, y, z, values));
        EXPECT_EQ(values, expected[static_cast<size_t>(p)]) << "point " << p;
    }

    double x = 0., y = 0., z = 0.;
    EXPECT_FALSE(grow.get_at(4, x, y));
    EXPECT_FALSE(grow.get_at(-1, x, y, z));
    EXPECT_EQ(grow.get_at(4).get_abscissa(), MP_UNDEF_REAL);

    grow.clear();
    EXPECT_EQ(grow.size(), 0);
    EXPECT_EQ(grow.get_nb_variables(), 0);
    EXPECT_FALSE(grow.is_3d());

    BrokenSet broken;
    broken.add_orphan_name();
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { broken.set_name(0, "x"); }), "n_aux == (MP_int)_v.size()"));
    EXPECT_TRUE(
        is_assertion_of(assertion_text([&] { broken.add(1., 2., 3., {4.}); }), "n_aux == (MP_int)_v.size()"));
}

TEST(PointsSet, MalformedFilesGiveTheirMessage)
{
    TempDir dir;
    const std::string path = dir.file("bad.txt");
    const std::string good_keys = "N_DIMENSIONS=3\nN_POINTS=2\nN_VARIABLES=1\nVAR1_NAME=A\n";
    const std::string good_body = "1 2 3 4\n5 6 7 8\n";
    const struct
    {
        std::string content;
        std::string message;
    } cases[] = {
        {points_file("N_POINTS=2\nN_VARIABLES=0\n", good_body), "Error while parsing N_DIMENSIONS"},
        {points_file("N_DIMENSIONS=4\nN_POINTS=2\n", good_body),
         "Invalid value for N_DIMENSIONS: should be 2D or 3D"},
        {points_file("N_DIMENSIONS=1\nN_POINTS=2\n", good_body),
         "Invalid value for N_DIMENSIONS: should be 2D or 3D"},
        {points_file("N_DIMENSIONS=3\nN_VARIABLES=0\n", good_body), "Error while parsing N_POINTS"},
        {points_file("N_DIMENSIONS=3\nN_POINTS=abc\n", good_body), "Error while parsing N_POINTS"},
        {points_file("N_DIMENSIONS=3\nN_POINTS=0\n", good_body),
         "Invalid value for N_POINTS: should be > 0 "},
        {points_file("N_DIMENSIONS=3\nN_POINTS=-5\n", good_body),
         "Invalid value for N_POINTS: should be > 0 "},
        {points_file("N_DIMENSIONS=3\nN_POINTS=2\nN_VARIABLES=2\nVAR1_NAME=A\n", good_body),
         "Error while parsing VAR2_NAME"},
        {points_file("N_DIMENSIONS=3\nN_POINTS=2\n", good_body), "Error while parsing VAR1_NAME"},
        {"N_DIMENSIONS=3\nN_POINTS=2\nN_VARIABLES=0\n1 2 3\n4 5 6\n",
         "Error when loading the points set: can't find 'Ascii' section"},
        {points_file(good_keys, "1 2 3 4\n5 6 7\n"), "Wrong line format for point#1"},
        {points_file(good_keys, "1 2 3 4\nx 6 7 8\n"), "Wrong line format for point#1"},
        {points_file(good_keys, "1 2 3 4\n# only a comment\n"),
         "Input points set file has not enough samples"},
        {points_file("N_DIMENSIONS=2\nN_POINTS=2000000000\nN_VARIABLES=0\n", "1 2\n"),
         "Input points set file has not enough samples"},
    };
    for (const auto& c : cases)
    {
        write_file(path, c.content);
        PointsSet set;
        EXPECT_FALSE(set.read(path)) << c.content;
        EXPECT_EQ(set.get_message(), c.message) << c.content;
        EXPECT_EQ(set.size(), 0);
    }

    PointsSet set;
    EXPECT_FALSE(set.read(dir.file("absent.txt")));
    EXPECT_EQ(set.get_message(), "Unable to read points set from file " + dir.file("absent.txt"));
    const std::string unwritable = dir.file("no/such/dir.txt");
    EXPECT_FALSE(set.write(unwritable, "T"));
    EXPECT_EQ(set.get_message(), "Cannot open PointsSet file " + unwritable);

    // Keywords may stand in any order, after the data included.
    write_file(path, "~Ascii\n1 2 3 4\n5 6 7 8\nVAR1_NAME=A\nN_VARIABLES=1\nN_POINTS=2\nN_DIMENSIONS=3\n");
    ASSERT_TRUE(set.read(path)) << set.get_message();
    EXPECT_EQ(set.size(), 2);
    EXPECT_EQ(set.get_at(1), Point3D(5., 6., 7.));
    EXPECT_TRUE(set.get_message().empty());
}

TEST(PointsSet, ShiftsFollowTheRelief)
{
    // Nodes 10 m apart; relief 2 at the minimum, 5 under (10, 10), undefined under (20, 0).
    GridReal topo(10., 10., 3, 3);
    topo.fill(2.);
    topo.set_at(1, 1, 5.);
    topo.set_at(2, 0, MP_UNDEF_REAL);

    PointsSet set;
    set.add(10.4, 9.6, 100.);
    set.add(0., 0., 50.);
    set.add(20., 0., 70.);
    ASSERT_TRUE(set.shift_down(topo)) << set.get_message();
    EXPECT_EQ(set.get_at(0).get_elevation(), 97.);
    EXPECT_EQ(set.get_at(1).get_elevation(), 50.);
    EXPECT_EQ(set.get_at(2).get_elevation(), 70.);
    ASSERT_TRUE(set.shift_up(topo));
    EXPECT_EQ(set.get_at(0).get_elevation(), 100.);

    set.add(45., 0., 10.);
    EXPECT_FALSE(set.shift_up(topo));
    EXPECT_EQ(set.get_message(), "PointsSet::shift_up: [45, 0] not in the given topography");
    EXPECT_EQ(set.get_at(0).get_elevation(), 103.) << "points on the grid are still moved";
    EXPECT_EQ(set.get_at(3).get_elevation(), 10.);
    EXPECT_FALSE(set.shift_down(topo));
    EXPECT_EQ(set.get_message(), "PointsSet::shift_down: [45, 0] not in the given topography");

    GridReal empty(10., 10., 3, 3);
    EXPECT_FALSE(set.shift_down(empty));
    EXPECT_EQ(set.get_message(), "PointsSet::shift_down: Cannot get minimum value from the given topography");
    EXPECT_FALSE(set.shift_up(empty));
    EXPECT_EQ(set.get_message(), "PointsSet::shift_up: Cannot get minimum value from the given topography");

    PointsSet flat;
    flat.add(0., 0., MP_UNDEF_REAL);
    EXPECT_FALSE(flat.shift_down(topo));
    EXPECT_EQ(flat.get_message(), "PointsSet::shift_down: This method is only available for 3D centerlines");
    EXPECT_FALSE(flat.shift_up(topo));
    EXPECT_EQ(flat.get_message(), "PointsSet::shift_up: This method is only available for 3D points sets");
}

TEST(PointsSet, DamagedFilesNeverCrash)
{
    TempDir dir;
    const std::string source = dir.file("valid.txt");
    ASSERT_TRUE(sample_3d().write(source, "Fuzz"));
    const std::string valid = read_file(source);
    const std::string path = dir.file("damaged.txt");

    // Every result must be a clean answer; an accepted set must be whole.
    auto check = [&](const std::string& content) -> bool
    {
        write_file(path, content);
        PointsSet set;
        bool ok = false;
        EXPECT_NO_THROW(ok = set.read(path)) << content;
        if (ok)
        {
            EXPECT_GT(set.size(), 0);
            for (int p = 0; p < set.size(); ++p)
            {
                double x, y, z;
                std::vector<double> values;
                EXPECT_TRUE(set.get_at(p, x, y, z, values));
                EXPECT_EQ(static_cast<int>(values.size()), set.get_nb_variables());
            }
        }
        else
            EXPECT_FALSE(set.get_message().empty());
        return ok;
    };

    ASSERT_TRUE(check(valid));
    // Only the loss of the final blank and line end leaves the last sample whole.
    for (size_t length = 0; length < valid.size(); ++length)
        EXPECT_EQ(check(valid.substr(0, length)), length + 2 >= valid.size()) << "length " << length;

    Lcg lcg(20240917);
    const char alphabet[] = "0123456789=#~ \n\t.-+eE_ABNVx\r";
    for (int variant = 0; variant < 400; ++variant)
    {
        std::string damaged = valid;
        const int changes = 1 + static_cast<int>(lcg.next() % 6);
        for (int c = 0; c < changes; ++c)
        {
            const size_t at = lcg.next() % damaged.size();
            const uint32_t kind = lcg.next() % 4;
            if (kind == 0)
                damaged[at] = static_cast<char>(lcg.next() % 256);
            else if (kind == 1)
                damaged[at] = alphabet[lcg.next() % (sizeof(alphabet) - 1)];
            else if (kind == 2)
                damaged.erase(at, 1 + lcg.next() % 8);
            else
                damaged.insert(at, 1, alphabet[lcg.next() % (sizeof(alphabet) - 1)]);
            if (damaged.empty())
                damaged = "#";
        }
        check(damaged);
    }
}
