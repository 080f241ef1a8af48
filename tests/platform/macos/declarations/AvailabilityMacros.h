// Included by Qt's headers, for versions older than all that are of interest here.
#pragma once
