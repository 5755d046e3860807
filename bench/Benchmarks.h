#pragma once

namespace cqsurvey::bench {

// Each registers the benchmarks of its subject.
void RegisterRecord();
void RegisterOpen();
void RegisterMemory();
void RegisterIterate();
void RegisterFindByName();
void RegisterEdit();
void RegisterDelete();
void RegisterView();
void RegisterDescriptions();
void RegisterInformation();
void RegisterPolylines();
void RegisterDrawing();
void RegisterPlot();
void RegisterFieldDrawing();

}  // namespace cqsurvey::bench
