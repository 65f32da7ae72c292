#pragma once
// The facies families of the simulation, one description each. The
// descriptions are defined beside the facies register, so that any program
// that builds a Facies also links and registers every family.

#include "kernel/common/FaciesDescription.h"

class ChannelLag
{
public:
    static FaciesDescription _fd;
};

class PointBar
{
public:
    static FaciesDescription _fd;
};

class SandPlug
{
public:
    static FaciesDescription _fd;
};

class CrevasseI
{
public:
    static FaciesDescription _fd;
};

class CrevasseChannel
{
public:
    static FaciesDescription _fd;
};

class CrevasseII
{
public:
    static FaciesDescription _fd;
};

class Levee
{
public:
    static FaciesDescription _fd;
};

class Overbank
{
public:
    static FaciesDescription _fd;
};

class MudPlug
{
public:
    static FaciesDescription _fd;
};

class HemipelagicPlug
{
public:
    static FaciesDescription _fd;
};

class Wetland
{
public:
    static FaciesDescription _fd;
};

class Draping
{
public:
    static FaciesDescription _fd;
};

class Pelagic
{
public:
    static FaciesDescription _fd;
};
