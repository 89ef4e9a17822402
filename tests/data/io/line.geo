// A straight bar from (0,0,0) to (3,0,0) in three cubic segments.
Point(1) = {0, 0, 0}; Point(2) = {3, 0, 0};
Line(1) = {1, 2}; Transfinite Curve{1} = 4;
Physical Curve("bar") = {1};
