#include "AlgorithmTable.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"


namespace Ixor {
namespace FastInfoset {


const AlgorithmTable::Entry AlgorithmTable::ENTRIES[LAST] =
{
	{HEXADECIMAL, "hexadecimal", HexEncoding::encode,    HexEncoding::check,    HexEncoding::decode},
	{BASE64,      "base64",      DWordEncoding::encode,  DWordEncoding::check,  DWordEncoding::decode},
	{SHORT,       "short",       ShortEncoding::encode,  ShortEncoding::check,  ShortEncoding::decode},
	{INT,         "int",         IntEncoding::encode,    IntEncoding::check,    IntEncoding::decode},
	{LONG,        "long",        LongEncoding::encode,   LongEncoding::check,   LongEncoding::decode},
	{BOOLEAN,     "boolean",     BoolEncoding::encode,   BoolEncoding::check,   BoolEncoding::decode},
	{FLOAT,       "float",       FloatEncoding::encode,  FloatEncoding::check,  FloatEncoding::decode},
	{DOUBLE,      "double",      DoubleEncoding::encode, DoubleEncoding::check, DoubleEncoding::decode},
	{UUID,        "uuid",        UUIDEncoding::encode,   UUIDEncoding::check,   UUIDEncoding::decode},
	{CDATA,       "cdata",       CDataEncoding::encode,  CDataEncoding::check,  CDataEncoding::decode},
};


} } // namespace Ixor::FastInfoset
