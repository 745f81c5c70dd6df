// The tables are what an optimiser reads: the right time must be picked,
// ratios must point the right way, and failures must not pass as results.


#include "BenchReport.h"
#include <gtest/gtest.h>
#include <sstream>


namespace {


typedef benchmark::BenchmarkReporter::Run BenchRun;


BenchRun makeRun(const std::string& name, double milliseconds, const char* aggregate = nullptr, int repetitions = 1)
	/// A run of ten iterations taking milliseconds each; an aggregate
	/// carries its statistic the same way, as Google Benchmark does.
{
	BenchRun run;
	run.run_name.function_name = name;
	run.family_index = 0;
	run.per_family_instance_index = 0;
	run.repetition_index = 0;
	run.repetitions = repetitions;
	run.time_unit = benchmark::kMillisecond;
	run.iterations = 10;
	run.real_accumulated_time = milliseconds/1e3*10;
	run.cpu_accumulated_time = run.real_accumulated_time;
	if (aggregate)
	{
		run.run_type = BenchRun::RT_Aggregate;
		run.aggregate_name = aggregate;
	}
	return run;
}


BenchRun makeCV(const std::string& name, double cv)
{
	BenchRun run = makeRun(name, 0, "cv", 3);
	run.aggregate_unit = benchmark::kPercentage;
	run.real_accumulated_time = run.cpu_accumulated_time = cv;
	return run;
}


Bench::Document& addDocument(Bench::Documents& documents, const std::string& name, std::size_t xmlSize, std::size_t fiSize)
{
	documents.emplace_back(new Bench::Document);
	Bench::Document& doc = *documents.back();
	doc.name = name;
	doc.loaded = true;
	doc.fileSize = xmlSize;
	doc.xmlSize = xmlSize;
	doc.fiSize = fiSize;
	doc.xmlGzipSize = xmlSize/10;
	doc.fiGzipSize = xmlSize/10;
	return doc;
}


std::string report(const Bench::Documents& documents, const std::vector<std::vector<BenchRun>>& groups)
{
	std::ostringstream progress;
	std::ostringstream tables;
	Bench::TableReporter reporter(documents, tables);
	reporter.SetOutputStream(&progress);
	reporter.SetErrorStream(&progress);
	for (const std::vector<BenchRun>& group: groups) reporter.ReportRuns(group);
	reporter.Finalize();
	return tables.str();
}


std::string section(const std::string& text, const std::string& heading)
	/// From "== heading" up to the next heading.
{
	const std::string::size_type start = text.find("\n== " + heading);
	if (start == std::string::npos) return std::string();
	const std::string::size_type end = text.find("\n== ", start + 1);
	return text.substr(start + 1, end == std::string::npos ? std::string::npos : end - start - 1);
}


std::string from(const std::string& text, const std::string& marker)
{
	const std::string::size_type start = text.find(marker);
	return start == std::string::npos ? std::string() : text.substr(start);
}


std::string line(const std::string& text, const std::string& label)
	/// The line whose text starts with label, squeezed to single spaces.
{
	std::istringstream in(text);
	std::string current;
	while (std::getline(in, current))
	{
		const std::string::size_type first = current.find_first_not_of(' ');
		if (first == std::string::npos || current.compare(first, label.size(), label) != 0) continue;
		std::istringstream words(current);
		std::string word;
		std::string squeezed;
		while (words >> word) squeezed += (squeezed.empty() ? "" : " ") + word;
		return squeezed;
	}
	return "(no line " + label + ")";
}


TEST(BenchReportTest, RowsAndRatiosCompareLikeWithLike)
{
	Bench::Documents documents;
	Bench::Document& a = addDocument(documents, "a", 10000000, 4000000);
	a.xmlWriterSize = 8000000;
	addDocument(documents, "b", 1000000, 500000);
	addDocument(documents, "never-run", 1, 1).loaded = false;

	const std::string tables = report(documents,
	{
		{makeRun("parse_fi/a", 20)}, {makeRun("parse_expat/a", 40)},
		{makeRun("write_fi/a", 50)}, {makeRun("write_xml/a", 100)},
		{makeRun("parse_fi/b", 1)}, {makeRun("parse_expat/b", 9)},
	});

	const std::string tableA = section(tables, "a:");
	// ms/doc, docs/s, io MB/s, XML-eq MB/s, vs expat
	EXPECT_EQ("FI -> SAX: FastInfosetParser 20.000 50.00 200.0 500.0 2.00x", line(tableA, "FI -> SAX"));
	EXPECT_EQ("XML -> SAX: expat 40.000 25.00 250.0 250.0 1.00x", line(tableA, "XML -> SAX: expat"));
	EXPECT_EQ("events -> FI: FastInfosetWriter 50.000 20.00 80.00 200.0 0.80x", line(tableA, "events -> FI"));
	EXPECT_EQ("events -> XML: host XMLWriter 100.000 10.00 80.00 100.0 0.40x", line(tableA, "events -> XML"));
	EXPECT_EQ("(no line memcpy)", line(tableA, "memcpy"));
	EXPECT_EQ("FI -> SAX: FastInfosetParser 1.000 1000 500.0 1000.0 9.00x", line(section(tables, "b:"), "FI -> SAX"));
	EXPECT_EQ("", section(tables, "never-run"));

	// geometric mean, the lowest ratio (the largest size), documents, which one
	const std::string summary = section(tables, "Summary");
	EXPECT_EQ("== Summary over 2 documents", line(summary, "== Summary"));
	EXPECT_EQ("FI parse / expat parse 4.243 2.000 2 a", line(summary, "FI parse / expat"));   // sqrt(2*9)
	EXPECT_EQ("FI writer / host XMLWriter 2.000 2.000 1 a", line(summary, "FI writer / host"));
	EXPECT_EQ("FI writer / expat parse 0.800 0.800 1 a", line(summary, "FI writer / expat"));
	EXPECT_EQ("FI parse / libxml2 parse - - 0", line(summary, "FI parse / libxml2"));
	EXPECT_EQ("FI size / XML size 0.447 0.500 2 b", line(summary, "FI size"));   // sqrt(0.4*0.5)
	EXPECT_EQ("FI -> SAX: FastInfosetParser 707.1", line(summary, "FI -> SAX"));   // sqrt(500*1000)
	EXPECT_EQ("Checks: all passed", line(summary, "Checks"));
}


TEST(BenchReportTest, RepeatedRunsReportTheMedian)
{
	// Iterations first, then the aggregates, as with
	// --benchmark_repetitions; or the aggregates alone.
	struct Case { const char* name; bool withIterations; };
	const Case CASES[] = {{"iterations and aggregates", true}, {"aggregates only", false}};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.name);
		Bench::Documents documents;
		addDocument(documents, "a", 1000000, 500000);
		std::vector<BenchRun> group;
		if (c.withIterations)
		{
			for (double ms: {30.0, 10.0, 20.0}) group.push_back(makeRun("parse_fi/a", ms, nullptr, 3));
		}
		group.push_back(makeRun("parse_fi/a", 21, "mean", 3));
		group.push_back(makeRun("parse_fi/a", 18, "median", 3));
		group.push_back(makeRun("parse_fi/a", 7, "stddev", 3));
		group.push_back(makeCV("parse_fi/a", 0.25));
		const std::string tables = report(documents, {group});
		EXPECT_EQ("FI -> SAX: FastInfosetParser 18.000 55.56 27.78 55.56 - 25.0%", line(section(tables, "a:"), "FI -> SAX"));
	}
}


TEST(BenchReportTest, FailuresAreCountedNotAveraged)
{
	Bench::Documents documents;
	Bench::Document& doc = addDocument(documents, "a", 1000000, 500000);
	doc.counts["parse_fi"].elements = 100;
	doc.counts["parse_expat"].elements = 99;
	doc.problems.push_back("replayed events written as FI give convertToFIS's octets: NO");
	doc.notes.push_back("convertToXML: the XML written is not well-formed");

	BenchRun failed = makeRun("convertToFIS/a", 0);
	failed.error_occurred = true;
	failed.error_message = "FastInfoset Exception: Tag mismatch";
	const std::string tables = report(documents, {{makeRun("parse_fi/a", 1)}, {makeRun("parse_sax/a", 4)}, {failed}});

	const std::string table = section(tables, "a:");
	EXPECT_EQ("XML -> FI: Converter::convertToFIS failed: FastInfoset Exception: Tag mismatch", line(table, "XML -> FI"));
	EXPECT_EQ("CHECK FAILED: element counts differ: parse_expat=99 parse_fi=100", line(table, "CHECK FAILED: element"));
	EXPECT_EQ("CHECK FAILED: replayed events written as FI give convertToFIS's octets: NO", line(table, "CHECK FAILED: replayed"));
	EXPECT_EQ("note: convertToXML: the XML written is not well-formed", line(table, "note:"));

	const std::string summary = section(tables, "Summary");
	EXPECT_EQ("convertToFIS / host SAXParser parse - - 0", line(summary, "convertToFIS /"));
	EXPECT_EQ("FI parse / host SAXParser parse 4.000 4.000 1 a", line(summary, "FI parse / host"));
	EXPECT_EQ("Checks: 3 FAILED (see the tables); 1 notes (see the tables)", line(summary, "Checks"));
}


BenchRun withCounters(BenchRun run, double documents, double allocations)
	/// Counters as Google Benchmark hands them over: per iteration.
{
	run.counters["documents"] = benchmark::Counter(documents);
	run.counters["allocations"] = benchmark::Counter(allocations);
	return run;
}


TEST(BenchReportTest, CostsPerDocumentAreSplitOverTheDocumentsOfAnIteration)
{
	Bench::Documents documents;
	addDocument(documents, "tiny", 4000, 2000);
	addDocument(documents, "large", 10000000, 4000000);
	addDocument(documents, "short", Bench::SMALL_DOCUMENT_SIZE, 2000);

	BenchRun failed = makeRun("many/write_fi", 0);
	failed.error_occurred = true;
	failed.error_message = "replayed events written as FI do not give convertToFIS's octets";
	const std::string tables = report(documents,
	{
		{makeRun("parse_fi/tiny", 0.004)}, {makeRun("parse_fi/large", 20)}, {makeRun("parse_expat/short", 0.5)},
		{withCounters(makeRun("fixed/parse_fi", 0.0015), 1, 0)},
		{withCounters(makeRun("many/parse_fi", 0.030), 3, 6)},
		{failed},
	});

	EXPECT_EQ("FI -> SAX: FastInfosetParser 0.004000 250.0k 500.0 1000.0 -", line(section(tables, "tiny:"), "FI -> SAX"));

	const std::string summary = section(tables, "Summary");
	// Only the small documents have columns: tiny and short.
	const std::string perSecond = from(summary, "Documents per second");
	EXPECT_EQ("tiny short", line(perSecond, "tiny"));
	EXPECT_EQ("FI -> SAX: FastInfosetParser 250.0k -", line(perSecond, "FI -> SAX"));
	EXPECT_EQ("XML -> SAX: expat - 2000", line(perSecond, "XML -> SAX"));

	// µs/doc, docs/s, allocations/doc
	EXPECT_EQ("FI parse, the parser reused 1.50 666.7k 0.00", line(summary, "FI parse, the parser"));
	EXPECT_EQ("FI write, a new writer, buffer reused not measured", line(summary, "FI write, a new writer, buffer"));
	EXPECT_EQ("FI write, the writer restarted not measured", line(summary, "FI write, the writer restarted"));
	EXPECT_EQ("Many documents, one after another (tiny, short in turn):", line(summary, "Many documents"));
	EXPECT_EQ("FI parse, one parser 10.0 100.0k 2.00", line(summary, "FI parse, one parser"));
	EXPECT_EQ("FI write, a new writer each failed: replayed events written as FI do not give convertToFIS's octets",
		line(summary, "FI write, a new writer each"));
	EXPECT_EQ("Checks: 1 FAILED (see the tables)", line(summary, "Checks"));
}


TEST(BenchReportTest, SectionsWithoutMeasurementsAreLeftOut)
{
	Bench::Documents documents;
	addDocument(documents, "large", 10000000, 4000000);
	const std::string summary = section(report(documents, {{makeRun("parse_fi/large", 20)}}), "Summary");
	EXPECT_EQ("(no line Documents per second)", line(summary, "Documents per second"));
	EXPECT_EQ("(no line Costs of every document)", line(summary, "Costs of every document"));
	EXPECT_EQ("(no line Many documents)", line(summary, "Many documents"));
}


} // namespace
