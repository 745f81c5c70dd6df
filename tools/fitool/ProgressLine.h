//
// ProgressLine.h
//
// Tool: fitool
// Module: ProgressLine
//


#ifndef Fitool_ProgressLine_INCLUDED
#define Fitool_ProgressLine_INCLUDED


#include "Poco/Timestamp.h"
#include "Poco/Types.h"
#include <string>


namespace Fitool {


class ProgressLine
	/// One line on standard error that shows how far fitool has read a large
	/// input: "label: 12.3 of 45.6 MB, 78.9 MB/s". It shows only for inputs
	/// over THRESHOLD octets and only when standard error is a terminal, so
	/// that scripts and logs never see it.
{
public:
	static const Poco::UInt64 THRESHOLD = 8 * 1024 * 1024;

	ProgressLine();
	~ProgressLine();
		/// Clears the line.

	void start(const std::string& label, Poco::UInt64 total);
		/// Shows progress from now on when total exceeds THRESHOLD and
		/// standard error is a terminal; total 0 means unknown size.

	void update(Poco::UInt64 done);
		/// Redraws the line at most five times a second.

	void finish();
		/// Clears the line; later updates show nothing.

private:
	ProgressLine(const ProgressLine&);
	ProgressLine& operator = (const ProgressLine&);

	bool            _active;
	std::string     _label;
	Poco::UInt64    _total;
	Poco::Timestamp _started;
	Poco::Timestamp _drawn;
};


} // namespace Fitool


#endif // Fitool_ProgressLine_INCLUDED
