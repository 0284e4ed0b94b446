// The measurement service's modules.
import '../harness.js';
import './geometry.test.js';
import './messages.test.js';
import './random.test.js';
import './session.test.js';
