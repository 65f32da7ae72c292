#include "kernel/domain/CenterlineDisc.h"

CenterlineDisc::CenterlineDisc() = default;

CenterlineDisc::CenterlineDisc(const GridParams& params) : GridReal(params) {}

CenterlineDisc::~CenterlineDisc() = default;
