#include "records.h"

int Verbose_Flag = 1;
int Simplify = 0;
int File_No = 0;
int File_Flag = 0;
int Tapefile = 0;
int Bad_blkflag = 0;
Dbptr Db = dbinvalid();
Pf Parameters;

Tbl<std::string> Tbl_031;
Tbl<std::string> Tbl_033;
Tbl<std::string> Tbl_034;
Arr<char> Geoscope_channels;
