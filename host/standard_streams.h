#pragma once

/// Occupies the descriptors of closed standard streams, so that no file opened later gets one of
/// them and receives what is printed. Reading and writing them still fails.
void FillStandardStreams();
