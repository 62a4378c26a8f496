#include "loader/output/dataSet.h"

#include "loader/output/errorDialog.h"
#include "loader/output/messages.h"
#include "loader/output/solutionTimes.h"
#include "loader/output/zoneRegistration.h"

#include "loader/mesh/variables.h"

#include "interface/kro.h"
#include "loader/sdk/ArgList.h"

#include <algorithm>

namespace veltra::vtkfile {

namespace {

bool createDataSet(const DataSetRequest& request) {
    toolbox::ArgList arguments;
    return arguments.appendString("LoaderName", *request.loaderName) &&
           arguments.appendString("DataSetTitle", request.title) && KroUtilDataSetCreateX(arguments.get()) == 1;
}

bool prepareDataSet(const DataSetRequest& request, const std::vector<VariableKey>& incoming, VariableMap& variables) {
    const bool ready =
        request.appends ? kroutildataio_utils::retrieveVarIndexesInDataSet(variables) : createDataSet(request);
    return ready && kroutildataio_utils::updateDataSetWithIncomingVariables(variables, incoming);
}

} // namespace

bool buildDataSet(const DataSetRequest& request, const LoadedFiles& loaded, VariableMap& variables,
                  ui::TaskProgress& progress) {
    // An empty zone among others may lack its arrays; when all are empty, the first of them says what is wrong.
    const bool allEmpty = std::all_of(loaded.zones.begin(), loaded.zones.end(), isEmpty);
    for (const Zone& zone : loaded.zones)
        if (allEmpty || !isEmpty(zone))
            checkPieces(zone);
    const std::vector<VariableKey> incoming = collectVariables(loaded.zones);
    if (incoming.empty())
        return false;
    variables.clear();
    if (!prepareDataSet(request, incoming, variables)) {
        KroUtilPostLastErrorMessage();
        return false;
    }
    const std::vector<double> times = request.hasExplicitTimes ? std::vector<double>(loaded.files.size())
                                                               : solutionTimes(loaded.files, request.timeSource);
    const bool registered =
        registerZones(loaded.zones, {request.loaderName, request.strand, variables, times}, progress);
    if (KroUtilDataSetGetNumZones() == 0) {
        showError(*request.loaderName, noFileProvidedData);
        return false;
    }
    return registered;
}

} // namespace veltra::vtkfile
