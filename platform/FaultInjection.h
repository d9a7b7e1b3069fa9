#pragma once

// A seam through which tests make the n-th file-system step fail, so every
// failure path of a writer can be exercised without special permissions or
// LD_PRELOAD tricks. Production code never arms it; when disarmed each check
// is one relaxed load.
//
// A failed step looks to its caller exactly like the system call failing:
//
//   step    checked in                       the caller sees
//   Create  OutputFile::CreateUnique         false (errno EACCES), no file made
//   Write   OutputFile::Write                false (errno ENOSPC), nothing written
//   Rename  RenameNoReplace                  false (errno EIO), nothing moved
//   Remove  RemoveFile                       false (errno EIO), the file stays
//   Resize  ResizeFile                       false (errno ENOSPC), the size unchanged
//   Map     MappedFile::Open: the read-write open
//                                            Status::CannotOpen, as for a file
//                                            the process may not write
//           MappedFile::Open: the mmap       Status::CannotMap
//   Time    GetFileStatus, GetLastWriteTime,
//           GetFileTimes                     nullopt, as for a missing file
//           SetFileTimes                     false, the times unchanged

namespace vliptc::platform::fault {

enum class Step {
    Create,  // creating a file for writing
    Write,   // writing bytes (a failure here is a short write)
    Rename,  // RenameNoReplace
    Remove,  // RemoveFile
    Resize,  // changing a file's size
    Map,     // opening a file for a read-write mapping, and mapping any file
    Time,    // reading a file's status or times, and setting its times
    kCount,
};

// The n-th (1-based) call of step from now on fails; 0 disarms that step.
void FailNth(Step step, int n);
// Disarms every step and clears the call counts.
void Reset();
// Counts the calls of every step from now on without failing any, so a test
// can learn how many steps of each kind an operation takes (Calls) and then
// fail each of them in turn. FailNth starts counting too.
void StartCounting();
// Calls of step checked since counting started (0 while the seam is idle).
int Calls(Step step);
// Called by the platform layer before each step; true when this one must fail.
bool ShouldFail(Step step);

// Disarms every step when a test scope ends.
struct ScopedReset {
    ScopedReset() = default;
    ScopedReset(const ScopedReset&) = delete;
    ScopedReset& operator=(const ScopedReset&) = delete;
    ~ScopedReset() { Reset(); }
};

}  // namespace vliptc::platform::fault
