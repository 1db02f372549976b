#include "syncservices/FolderManager.h"
