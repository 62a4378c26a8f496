// vtkPeer FILE... reads files with VTK's own readers, keeps their data, and prints seconds and memory as JSON.

#include "krohost/cli/terminal/Stopwatch.h"

#include <vtkDataObject.h>
#include <vtkErrorCode.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>
#include <vtkXMLMultiBlockDataReader.h>
#include <vtkXMLPUnstructuredGridReader.h>
#include <vtkXMLReader.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

namespace {

/// Processor time of the process.
double cpuSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// The most memory that the process has had. ru_maxrss would also count the process that started it.
long peakKib() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long figure = 0; word == "VmHWM:" && status >> figure)
            return figure;
    return 0;
}

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
    double seconds = 0, processorSeconds = 0;
    for (int index = 1; index < argumentCount; ++index) {
        const auto reader = readerFor(arguments[index]);
        reader->SetFileName(arguments[index]);
        const double earlierCpuSeconds = cpuSeconds();
        const krohost::cli::Stopwatch stopwatch;
        reader->Update();
        seconds += stopwatch.seconds();
        processorSeconds += cpuSeconds() - earlierCpuSeconds;
        if (reader->GetErrorCode() != vtkErrorCode::NoError) {
            std::fprintf(stderr, "%s cannot be read\n", arguments[index]);
            return 1;
        }
        outputs.emplace_back(reader->GetOutputDataObject(0));
    }
    std::printf("{\"update_s\": %.6f, \"update_cpu_s\": %.6f, \"peak_kib\": %ld}\n", seconds, processorSeconds,
                peakKib());
}
