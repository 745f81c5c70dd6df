#include "ProgressLine.h"
#include "TextFormat.h"
#include <iostream>
#include <unistd.h>


namespace Fitool {


namespace
{
	const Poco::Timestamp::TimeDiff REDRAW_INTERVAL = 200000; // microseconds
}


ProgressLine::ProgressLine():
	_active(false),
	_total(0)
{
}


ProgressLine::~ProgressLine()
{
	finish();
}


void ProgressLine::start(const std::string& label, Poco::UInt64 total)
{
	_active = total > THRESHOLD && isatty(STDERR_FILENO);
	_label = label;
	_total = total;
	_started.update();
	_drawn = _started;
}


void ProgressLine::update(Poco::UInt64 done)
{
	if (!_active || _drawn.elapsed() < REDRAW_INTERVAL) return;
	_drawn.update();
	const double seconds = static_cast<double>(_started.elapsed()) / 1e6;
	std::cerr << '\r' << _label << ": " << TextFormat::megabytes(static_cast<double>(done)) << " of "
		<< TextFormat::megabytes(static_cast<double>(_total)) << " MB, "
		<< TextFormat::megabytes(seconds > 0 ? static_cast<double>(done) / seconds : 0) << " MB/s   " << std::flush;
}


void ProgressLine::finish()
{
	if (!_active) return;
	_active = false;
	// Only a line that was drawn needs clearing.
	if (_drawn != _started) std::cerr << "\r\033[K" << std::flush;
}


} // namespace Fitool
