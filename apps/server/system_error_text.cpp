#include "system_error_text.h"

#include <cerrno>
#include <cstring>

namespace server {

namespace {

const char *missing_right(WANTED_T wanted) {
    switch (wanted) {
    case WANTED_T::READ_FILE:
        return "没有读取权限, 运行本程序的用户需要文件的r和各级目录的x";
    case WANTED_T::READ_FOLDER:
        return "没有读取权限, 运行本程序的用户需要目录的r和x, 以及各级上级目录的x";
    case WANTED_T::WRITE_FILE:
        return "没有写入权限, 运行本程序的用户需要所在目录的w和x";
    default:
        return "没有权限";
    }
}

} // namespace

const char *system_error_text(int error, WANTED_T wanted) {
    switch (error) {
    case EACCES:
    case EPERM:
        return missing_right(wanted);
    case ENOENT:
        return "不存在, 请检查路径, 或磁盘是否已挂载";
    case ENOTDIR:
        return "路径中有一级不是目录";
    case EISDIR:
        return "是目录, 不是文件";
    case EEXIST:
        return "已存在, 但不是普通文件, 请换一个文件名";
    case EIO:
        return "读写磁盘出错, 请检查磁盘和连线";
    case ESTALE:
    case EHOSTDOWN:
        return "网络文件系统已断开, 请重新挂载";
    case ENOSPC:
    case EDQUOT:
        return "磁盘已满, 请腾出空间";
    case EROFS:
        return "文件系统只读, 请换一个可写的目录(systemd单元下为RuntimeDirectory)";
    case EMFILE:
    case ENFILE:
        return "打开的文件和连接过多, 请调高上限(systemd为LimitNOFILE=, 命令行为ulimit -n)";
    case EAGAIN:
        return "线程过多, 请调高上限(systemd为TasksMax=, 命令行为ulimit -u)";
    case ENOMEM:
        return "内存不足, 请增加内存或调高上限(systemd为MemoryMax=)";
    default:
        return strerrordesc_np(error);
    }
}

} // namespace server
