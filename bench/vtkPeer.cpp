// Reads the files that are named with the toolkit the format comes from, keeps what they hold, and prints what it took.

#include "bench/process.h"

#include <vtkDataObject.h>
#include <vtkErrorCode.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>
#include <vtkXMLMultiBlockDataReader.h>
#include <vtkXMLPUnstructuredGridReader.h>
#include <vtkXMLReader.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

const bench::Stopwatch sinceStart;

vtkSmartPointer<vtkXMLReader> readerFor(const std::string& path) {
    if (path.ends_with(".vtm"))
        return vtkSmartPointer<vtkXMLMultiBlockDataReader>::New();
    if (path.ends_with(".pvtu"))
        return vtkSmartPointer<vtkXMLPUnstructuredGridReader>::New();
    return vtkSmartPointer<vtkXMLUnstructuredGridReader>::New();
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::vector<vtkSmartPointer<vtkDataObject>> outputs;
    double seconds = 0, cpuSeconds = 0;
    for (int index = 1; index < argumentCount; ++index) {
        const auto reader = readerFor(arguments[index]);
        reader->SetFileName(arguments[index]);
        const double earlierCpuSeconds = bench::cpuSeconds();
        const bench::Stopwatch stopwatch;
        reader->Update();
        seconds += stopwatch.seconds();
        cpuSeconds += bench::cpuSeconds() - earlierCpuSeconds;
        if (reader->GetErrorCode() != vtkErrorCode::NoError) {
            std::fprintf(stderr, "%s cannot be read\n", arguments[index]);
            return 1;
        }
        outputs.emplace_back(reader->GetOutputDataObject(0));
    }
    unsigned long outputKib = 0;
    for (const auto& output : outputs)
        outputKib += output->GetActualMemorySize();
    std::printf("{\"update_s\": %.6f, \"wall_s\": %.6f, \"cpu_s\": %.6f, \"update_cpu_s\": %.6f, \"peak_kib\": %ld, "
                "\"output_kib\": %lu}\n",
                seconds, sinceStart.seconds(), bench::cpuSeconds(), cpuSeconds, bench::peakKib(), outputKib);
}
