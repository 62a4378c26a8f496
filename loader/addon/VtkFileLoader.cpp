#include "loader/addon/VtkFileLoader.h"

#include "loader/addon/AddOn.h"
#include "loader/addon/VtkFileLoaderInstructions.h"
#include "loader/addon/fileReader.h"
#include "loader/addon/messages.h"

#include "loader/output/dataSet.h"
#include "loader/output/errorDialog.h"

#include "loader/sdk/ArgList.h"
#include "loader/sdk/StringList.h"
#include "loader/sdk/TaskProgress.h"
#include "loader/sdk/exceptions.h"
#include "loader/sdk/loaderUtilities.h"

#include <new>
#include <utility>

namespace veltra::vtkfile {

namespace {

using vtk::VtkFileLoaderInstructions;

constexpr const char* dataSetTitle = "VTK Data";

/// The host's lock on behalf of the add-on.
class HostLock {
public:
    HostLock() { KroUtilLockStart(addOn().id); }
    ~HostLock() { KroUtilLockFinish(addOn().id); }
    HostLock(const HostLock&) = delete;
    HostLock& operator=(const HostLock&) = delete;
};

} // namespace

class VtkFileLoader::Impl {
public:
    explicit Impl(std::shared_ptr<const std::string> name) : name_(std::move(name)) {}

    const std::shared_ptr<const std::string>& name() const { return name_; }

    /// A load into a new dataset is within the host's data-load bracket and is recorded; one with a strand adds to
    /// the current dataset and leaves both to whoever called it.
    bool load(const VtkFileLoaderInstructions& instructions, bool fromFileSelection) {
        const HostLock lock;
        toolbox::ArgList finishOptions;
        if (instructions.strand)
            return guardedLoad(instructions, fromFileSelection, finishOptions);
        KroUtilDataLoadStart();
        const bool loaded = guardedLoad(instructions, fromFileSelection, finishOptions);
        const bool finished = KroUtilDataLoadFinishX(finishOptions.get()) == 1;
        return loaded && finished;
    }

private:
    bool guardedLoad(const VtkFileLoaderInstructions& instructions, bool fromFileSelection,
                     toolbox::ArgList& finishOptions) noexcept {
        try {
            const auto progress =
                instructions.strand ? kroutilutil::createNoopTaskProgressBar() : kroutilutil::createTaskProgressBar(2);
            return build(instructions, *progress) &&
                   (instructions.strand || record(instructions, fromFileSelection, finishOptions));
        } catch (const std::bad_alloc& error) {
            showError(*name_, loadOutOfMemory, error.what());
        } catch (const bad_lexical_cast& error) {
            showError(*name_, badValues, error.what());
        } catch (const IOException& error) {
            showError(*name_, fileError, error.what());
        } catch (const InterruptedException&) {
            // the user knows
        } catch (...) {
            showError(*name_, unknownError);
        }
        return false;
    }

    bool build(const VtkFileLoaderInstructions& instructions, ui::TaskProgress& progress) {
        const LoadedFiles loaded = readFiles(instructions, *progress.openSubTask());
        if (loaded.zones.empty())
            throw IOException(noPieces);
        DataSetRequest request;
        request.loaderName = name_;
        request.title = dataSetTitle;
        request.appends = instructions.strand.has_value();
        request.strand = instructions.strand.value_or(-1);
        request.hasExplicitTimes = !instructions.solutionTimes.empty();
        request.timeSource = instructions.solutionTimeSource;
        return buildDataSet(request, loaded, variables_, *progress.openSubTask());
    }

    static LoadedFiles readFiles(const VtkFileLoaderInstructions& instructions, ui::TaskProgress& progress) {
        LoadedFiles loaded;
        progress.setStepCount(instructions.files.size());
        for (std::size_t index = 0; index < instructions.files.size(); ++index) {
            const auto& path = instructions.files[index];
            const std::size_t firstZone = loaded.zones.size();
            readFile(path, *progress.openSubTask(path->string()), loaded);
            if (instructions.solutionTimes.empty())
                continue;
            const double time = instructions.solutionTimes.at(index);
            for (std::size_t zone = firstZone; zone < loaded.zones.size(); ++zone)
                loaded.zones[zone].solutionTime = time;
        }
        return loaded;
    }

    bool record(const VtkFileLoaderInstructions& instructions, bool fromFileSelection,
                toolbox::ArgList& finishOptions) const {
        toolbox::StringList list;
        instructions.write(list);
        return KroUtilImportSetLoaderInstr(name_->c_str(), list.get()) == 1 &&
               (!fromFileSelection ||
                kroutildataio_utils::addV3LoaderSelectedOptions(finishOptions, false, true, false));
    }

    std::shared_ptr<const std::string> name_;
    kroutildataio_utils::VariableMap variables_; // of the dataset that the last load built
};

VtkFileLoader::VtkFileLoader(std::shared_ptr<const std::string> name)
    : impl_(std::make_unique<Impl>(std::move(name))) {}

VtkFileLoader::~VtkFileLoader() = default;

bool VtkFileLoader::replay(const KroStringList* instructions) {
    return impl_->load(VtkFileLoaderInstructions(impl_->name(), instructions), false);
}

bool VtkFileLoader::loadSelectedFiles(const KroStringList* fileNames) {
    VtkFileLoaderInstructions instructions;
    for (const std::string& fileName : toolbox::items(fileNames))
        instructions.files.push_back(std::make_shared<const boost::filesystem::path>(fileName));
    return impl_->load(instructions, true);
}

const std::shared_ptr<const std::string>& VtkFileLoader::name() const {
    return impl_->name();
}

} // namespace veltra::vtkfile
