// A response as displacement, velocity or acceleration: its units tell which of them it is, a factor of i omega for
// each step between them makes the others.

const Output = (() => {
    const KINDS = ["displacement", "velocity", "acceleration"];
    const UNITS = ["", "/S", "/S**2"];

    // {length: "NM", order: 1} of "NM/S"; null for what is no motion of the ground.
    function motion(unit) {
        const [, length, perSecond, squared] = /^((?:[NUMCKP])?M)(?:(\/S(?:EC)?)((?:\*\*|\^)?2|\/S(?:EC)?)?)?$/i.exec(unit.trim()) || [];
        return length ? {length, order: squared ? 2 : perSecond ? 1 : 0} : null;
    }

    const inputOf = stages => (stages.find(s => s.input_units) || {input_units: ""}).input_units;

    function unitsOf(stages) {
        const last = stages.slice().reverse().find(s => s.output_units);
        return {input: inputOf(stages), output: last ? last.output_units : ""};
    }

    // How many steps of differentiation lead from what is wanted to the response's input; 0 for "as in the volume".
    function steps(stages, kind) {
        const found = motion(inputOf(stages));
        return found && KINDS.includes(kind) ? found.order - KINDS.indexOf(kind) : 0;
    }

    function unit(stages, kind) {
        const {input, output} = unitsOf(stages);
        const found = motion(input);
        const per = found && KINDS.includes(kind) ? found.length + UNITS[KINDS.indexOf(kind)] : input;
        return output && per ? `${output} per ${per}` : "as in the volume";
    }

    const wrap = degrees => degrees - 360 * Math.ceil((degrees - 180) / 360);

    function turn(curve, count) {
        if (count === 0)
            return curve;
        const factor = frequency => (2 * Math.PI * frequency) ** count;
        return Object.assign({}, curve, {
            amplitude: curve.amplitude.map((a, i) => a === null ? null : a * factor(curve.frequency[i])),
            phase: curve.phase.map(p => p === null ? null : wrap(p + 90 * count)),
        });
    }

    return {KINDS, motion, inputOf, steps, unit, turn, wrap};
})();
