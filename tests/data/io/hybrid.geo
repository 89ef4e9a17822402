// A hexahedral cube beside a tetrahedral one: pyramids join the two.
SetFactory("OpenCASCADE");
Box(1) = {0, 0, 0, 1, 1, 1};
Box(2) = {1, 0, 0, 1, 1, 1};
BooleanFragments{ Volume{1}; Delete; }{ Volume{2}; Delete; }
Transfinite Curve{:} = 2;
Transfinite Surface{Surface In BoundingBox{-0.1, -0.1, -0.1, 1.1, 1.1, 1.1}};
Recombine Surface{Surface In BoundingBox{-0.1, -0.1, -0.1, 1.1, 1.1, 1.1}};
Transfinite Volume{1};
Recombine Volume{1};
Physical Volume("all") = {1, 2};
