#pragma once

#include <windows.h>

#include <memory>

/// The Win32 calls that carry disk and volume traffic. The backend goes through this interface
/// so that tests can answer DeviceIoControl with hand-made replies and check the bytes of every
/// buffer it is handed; the host's implementation forwards each call unchanged.
class WindowsSystem
{
public:
    virtual ~WindowsSystem() = default;

    /// CreateFileW with no security attributes and no template.
    virtual HANDLE createFile(const wchar_t *path, DWORD access, DWORD share, DWORD disposition, DWORD flags) = 0;
    /// CloseHandle.
    virtual BOOL closeHandle(HANDLE handle) = 0;
    /// DeviceIoControl, synchronous (no OVERLAPPED).
    virtual BOOL deviceIoControl(HANDLE handle, DWORD code, void *in, DWORD inSize, void *out, DWORD outSize,
                                 DWORD *returned) = 0;
    /// VirtualAlloc.
    virtual void *virtualAlloc(SIZE_T size, DWORD allocationType, DWORD protect) = 0;
    /// VirtualFree.
    virtual BOOL virtualFree(void *address, SIZE_T size, DWORD freeType) = 0;

    /// FindFirstVolumeW.
    virtual HANDLE findFirstVolume(wchar_t *name, DWORD length) = 0;
    /// FindNextVolumeW.
    virtual BOOL findNextVolume(HANDLE find, wchar_t *name, DWORD length) = 0;
    /// FindVolumeClose.
    virtual BOOL findVolumeClose(HANDLE find) = 0;
    /// GetLogicalDrives.
    virtual DWORD logicalDrives() = 0;
    /// GetDriveTypeW.
    virtual UINT driveType(const wchar_t *root) = 0;
    /// GetVolumeNameForVolumeMountPointW.
    virtual BOOL volumeNameForMountPoint(const wchar_t *mountPoint, wchar_t *name, DWORD length) = 0;
    /// GetVolumeInformationW without the component length and file system flags.
    virtual BOOL volumeInformation(const wchar_t *root, wchar_t *label, DWORD labelLength, DWORD *serial,
                                   wchar_t *fileSystem, DWORD fileSystemLength) = 0;
    /// GetDiskFreeSpaceW.
    virtual BOOL diskFreeSpace(const wchar_t *root, DWORD *sectorsPerCluster, DWORD *bytesPerSector,
                               DWORD *freeClusters, DWORD *totalClusters) = 0;

    /// SetFilePointerEx without the new position.
    virtual BOOL setFilePointer(HANDLE handle, LARGE_INTEGER distance, DWORD method) = 0;
    /// ReadFile, synchronous.
    virtual BOOL readFile(HANDLE handle, void *buffer, DWORD length, DWORD *read) = 0;

    /// The running Windows.
    static std::shared_ptr<WindowsSystem> host();
};
