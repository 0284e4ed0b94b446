// The measurement service's modules.
import '../harness.js';
import './rectangles.test.js';
