#pragma once
// One size class of the load a flow carries, with the settling behaviour of
// quartz grains of that size in water.

class Grainsize
{
public:
    Grainsize(int gr_class, double proportion, double density);
    // The class whose range holds d; the stored diameter is that of the class.
    Grainsize(double d, double proportion, double density);
    virtual ~Grainsize() = default;

    int get_class() const { return _class; }
    double diameter() const { return _d; }
    double diameter_adim() const { return _d_adim; }
    double density() const { return _density; }
    double settling_velocity() const { return _ws; }
    double settling_velocity_max() const { return _ws_max; }
    double critical_shear_velocity() const { return _ucr; }
    double proportion() const { return _proportion; }
    void proportion(double value) { _proportion = value; }

    void cmp_grainsize();
    void cmp_grainsize_adim();
    void cmp_settling_velocity();
    void cmp_critical_shear_velocity();

    // Diameter in metres of a class, on a base-2 scale of millimetres.
    static double diameter_of_class(int gr_class);
    static int cmp_class_from_d(double d);

private:
    void cmp_all();

    int _class;
    double _d;
    double _d_adim;
    double _density;
    double _ws;
    double _ws_max;
    double _ucr;
    double _proportion;
};
