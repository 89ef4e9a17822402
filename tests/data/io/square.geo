// Unit square: a triangle half and a quadrangle half.
Point(1) = {0, 0, 0}; Point(2) = {1, 0, 0}; Point(3) = {1, 1, 0}; Point(4) = {0, 1, 0};
Point(5) = {2, 0, 0}; Point(6) = {2, 1, 0};
Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 4}; Line(4) = {4, 1};
Line(5) = {2, 5}; Line(6) = {5, 6}; Line(7) = {6, 3};
Curve Loop(1) = {1, 2, 3, 4}; Plane Surface(1) = {1};
Curve Loop(2) = {5, 6, 7, -2}; Plane Surface(2) = {2};
Transfinite Curve{:} = 2;
Transfinite Surface{2}; Recombine Surface{2};
Physical Surface("plate") = {1, 2};
Physical Curve("edge") = {4};
