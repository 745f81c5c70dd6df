//
// DoubleEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// DoubleEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_DoubleEncoding_INCLUDED
#define FastInfoset_DoubleEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_DoubleEncoding_INCLUDED
